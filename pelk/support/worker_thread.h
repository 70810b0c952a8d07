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

/// A holder of an object of several threads, which is freed when the last holder is gone. T has an
/// atomic `refCount`, 1 at the start for whoever made it.
template <class T>
class Ref {
public:
    Ref() = default;
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

    /// Made in the frame's memory, so that failure is an ExceptionMsg.
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

/// One thread's place in a group. It outlasts the worker's part in the group, so that the sum of
/// the counters holds while workers that are done go on to other groups.
struct GroupMember {
    static constexpr int kRunning = INT_MIN;
    WorkerThread* worker;           ///< held by the run
    std::atomic<int> lastProgress;  ///< the counter as the job left it; before that, kRunning

    int getProgress() const;
};

/// Where one run waits for its group. The manager hands it from run to run.
struct ThreadLatch {
    std::atomic<int> count{0};  ///< threads that have not finished
    platform::Event event{platform::Event::Reset::manual};
    int busy = 0;                     ///< guarded by the manager's lock
    Sequence<GroupMember> group{16};  ///< of the run's thread alone
    std::atomic<int> refCount{1};

    /// Counts threads as finished, and wakes the run behind the last one.
    void countDown(int threads);

    /// Waits until all have finished, for 200 ms at most; true if they have.
    bool wait();
};

/// Messages to one worker; its `queueLock` guards them.
class MessageQueue {
public:
    /// Takes memory for as many messages as ever wait at once, or throws an ExceptionMsg.
    MessageQueue();

    void put(int code);
    bool isEmpty() const { return count == 0; }
    /// The code of the oldest message, which leaves a queue that isn't empty.
    int take();

private:
    struct Node {
        int code;
        Node* next;
    };

    Node* newNode();

    Node* head = nullptr;
    Node* tail = nullptr;
    Node* freeNodes = nullptr;
    int count = 0;
    Sequence<Node> nodes{4};
};

/// A thread of the pool, and what the manager tells it before it posts a message.
struct WorkerThread {
    enum State {
        idle,       ///< can be handed out
        running,    ///< on a job or a task
        ended,      ///< or never begun, if the system refused the thread
        handedOut,  ///< a message is on its way
        starting    ///< the thread does not run yet
    };
    static constexpr int kRunJob = 0x1000;
    static constexpr int kEnd = 0x1001;
    static constexpr int kRunTask = 0x1002;

    explicit WorkerThread(platform::ThreadSlot managersSlot) : tlsIndex(managersSlot) {}

    ThreadJob* job = nullptr;
    int* abortFlag = nullptr;
    int progress = 0;
    int index = 0;
    std::atomic<int> state{starting};
    platform::Thread handle;
    Ref<ThreadLatch> latch;
    GroupMember* member = nullptr;  // of the latch's group
    int groupSize = 0;
    platform::ThreadSlot tlsIndex;  // a copy, as a thread may outlast the manager
    ThreadTask* task = nullptr;
    void* taskArg = nullptr;
    MessageQueue queue;
    platform::Event wakeEvent{platform::Event::Reset::automatic};
    CriticalSection queueLock;
    std::atomic<int> refCount{1};
    // Whoever takes it away counts the latch down: the worker, or the manager that killed it.
    std::atomic<bool> owesCount{false};
    WorkerThread* nextKilled = nullptr;  // once its thread was killed

    /// Starts the thread of a `starting` worker. Without one the worker has `ended`.
    bool start(int stackSize);

    void post(int code);

    /// Counts down the latch for a worker that was killed before it could.
    void settleCount();

private:
    static void enter(void* worker);
    void processMessages();
    int waitForMessage();
    void runJob();
    void runTask();
};

}  // namespace Tarnkit
