#pragma once

#include <atomic>
#include <climits>
#include <utility>

#include "pelk/base/critical_section.h"
#include "pelk/base/memory.h"
#include "pelk/base/sequence.h"
#include "pelk/platform/events.h"
#include "pelk/platform/threads.h"
#include "pelk/platform/tls.h"
#include "pelk/support/thread_manager.h"

namespace Tarnkit {

// The parts of WinThreadManager that outlive one of its calls. Nothing outside the thread manager
// and its tests includes this.

/// An intrusive reference count: a holder of an object that several threads share, which is freed
/// when the last holder is gone. T has an atomic `refCount`, 1 at the start for whoever made it.
/// Intrusive, unlike std::shared_ptr: a reference has to pass through the `void*` that a thread is
/// started with, and that of a killed thread stays counted though no holder is left.
template <class T>
class Ref {
public:
    Ref() = default;
    /// Takes a hold of its own; whatever holds the caller has stay.
    explicit Ref(T& object) : target(&object) { ++object.refCount; }
    Ref(Ref&& other) noexcept : target(std::exchange(other.target, nullptr)) {}
    Ref(const Ref& other) : target(other.target) {
        if (target)
            ++target->refCount;
    }
    Ref& operator=(Ref other) noexcept {
        std::swap(target, other.target);
        return *this;
    }
    ~Ref() {
        if (target)
            drop(*target);
    }

    /// A new object with its first hold, in memory of base/memory.h: failure is an ExceptionMsg.
    template <class... Args>
    static Ref create(Args&&... args) {
        void* const memory = allocate(sizeof(T));
        Ref made;
        try {
            made.target = ::new (memory) T(std::forward<Args>(args)...);
        } catch (...) {
            freeMemory(memory);
            throw;
        }
        return made;
    }

    T* operator->() const { return target; }
    T& operator*() const { return *target; }
    bool isNull() const { return !target; }

    /// Hands the hold over to the caller, who ends it by `drop`.
    T* release() { return std::exchange(target, nullptr); }

    /// Ends one hold on the object; the last one destroys it, on the thread that calls.
    static void drop(T& object) {
        if (--object.refCount > 0)
            return;
        object.~T();
        freeMemory(&object);
    }

private:
    T* target = nullptr;
};

struct WorkerThread;

/// One thread's place in a group. A worker that is done can be handed to another run at once, which
/// sets its counter to 0; its share in this run's progress therefore stays here, or the sum would
/// drop while the run goes on.
struct GroupMember {
    static constexpr int kRunning = INT_MIN;  ///< no value that a counter would have
    WorkerThread* worker;                     ///< held by the run; null if it could not be had
    std::atomic<int> lastProgress;  ///< the counter as the job left it; before that, kRunning

    /// This thread's share in the sum, for the thread that waits for the run.
    int getProgress() const;
};

/// Where one run waits for its group: a count-down latch with an event to sleep on. The manager
/// makes them, and hands them from run to run, as an event is a thing of the system. Workers hold
/// it too, since the last one still signals after the waiting thread has seen the count.
struct ThreadLatch {
    std::atomic<int> count{0};  ///< threads that have not finished; below 1 ends the wait
    platform::Event event{platform::Event::Reset::manual};  ///< set behind the last of them
    int busy = 0;  ///< 1 while a run has it; guarded by the manager's lock
    /// The run's threads, by their index. Only the run's own thread walks and changes it; a worker
    /// writes to its own member.
    Sequence<GroupMember> group{16};
    std::atomic<int> refCount{1};

    /// Counts threads as finished, and wakes the run behind the last one. Any thread may call.
    void countDown(int threads);

    /// Waits until all have finished, for 200 ms at most; true if they have. The time limit lets
    /// the waiting thread report progress and take a request to abort.
    bool wait();
};

/// Messages to one worker, first in, first out; its `queueLock` guards them. Nodes go from the
/// queue to a free list and back, so that posting a message takes no memory that could be refused.
class MessageQueue {
public:
    /// Takes memory for as many messages as ever wait at once, or throws an ExceptionMsg.
    MessageQueue();

    /// Adds a message behind the others: WorkerThread::kRunJob or one of its like.
    void put(int code);
    bool isEmpty() const { return count == 0; }
    /// The code of the oldest message, which leaves a queue that isn't empty.
    int take();

private:
    struct Node {
        int code;
        Node* next;
    };

    /// A node of the free list, else a new one.
    Node* newNode();

    Node* head = nullptr;       // the oldest message
    Node* tail = nullptr;       // the newest
    Node* freeNodes = nullptr;  // taken out, for the next ones
    int count = 0;              // messages that wait
    Sequence<Node> nodes{4};    // owns them all
};

/// A thread of the pool, and what the manager tells it before it posts a message. Fields without an
/// atomic are handed over by the message: the manager writes them while the worker is handed out
/// and sleeps, and the queue's lock makes them visible to it.
///
/// Life cycle, by `state`: starting -> handedOut -> running -> idle -> handedOut -> ... -> ended.
/// A manager and its thread hold one reference each; whoever drops the last one frees the record,
/// so a thread that outlasts the manager still has it.
struct WorkerThread {
    enum State {
        idle,       ///< sleeps and can be handed out; written by the worker after its work
        running,    ///< on a job or a task; written by the worker
        ended,      ///< or never begun, if the system refused the thread
        handedOut,  ///< a message is on its way; written by the manager, at the start by the worker
        starting    ///< the thread does not run yet; written by the manager
    };
    static constexpr int kRunJob = 0x1000;   ///< run `job` and count down `latch`
    static constexpr int kEnd = 0x1001;      ///< end the thread, after work that is on its way
    static constexpr int kRunTask = 0x1002;  ///< run `task`

    /// The first reference is the manager's. The thread is made by `start`.
    explicit WorkerThread(platform::ThreadSlot managersSlot) : tlsIndex(managersSlot) {}

    ThreadJob* job = nullptr;  ///< of the present run; null for a task
    int* abortFlag = nullptr;  ///< the job's `abort`
    int progress = 0;          ///< raised by the job, read by the run's thread meanwhile
    int index = 0;             ///< in the latest group
    std::atomic<int> state{starting};
    platform::Thread handle;
    Ref<ThreadLatch> latch;         ///< of the present run
    GroupMember* member = nullptr;  ///< of the latch's group
    int groupSize = 0;              ///< threads that the run asked for; 1 for a task
    platform::ThreadSlot tlsIndex;  ///< a copy, as a thread may outlast the manager
    ThreadTask* task = nullptr;
    void* taskArg = nullptr;
    MessageQueue queue;
    platform::Event wakeEvent{platform::Event::Reset::automatic};  ///< set behind each message
    CriticalSection queueLock;
    std::atomic<int> refCount{1};
    /// True while the latch still waits for this thread. Whoever takes it away counts the latch
    /// down, the worker or the manager that killed it: exactly one of them, or the run would hang
    /// or end too soon.
    std::atomic<bool> owesCount{false};
    WorkerThread* nextKilled = nullptr;  ///< the next record of a list of killed threads

    /// Starts the thread of a `starting` worker, with `stackSize` bytes or the system's default for
    /// 0. False if the system refuses it; the worker has then `ended`.
    bool start(int stackSize);

    /// Puts a message in the queue and wakes the thread. Any thread may call.
    void post(int code);

    /// Counts down the latch for a worker that was killed before it could.
    void settleCount();

private:
    static void enter(void* worker);
    /// The thread's main loop, until it is told to end.
    void processMessages();
    /// Sleeps until there is a message, and takes it out.
    int waitForMessage();
    void runJob();
    void runTask();
};

}  // namespace Tarnkit
