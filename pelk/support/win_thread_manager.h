#pragma once

#include "pelk/base/critical_section.h"
#include "pelk/base/sequence.h"
#include "pelk/platform/tls.h"
#include "pelk/support/numa_info.h"
#include "pelk/support/thread_manager.h"
#include "pelk/support/worker_thread.h"

namespace Tarnkit {

/// The thread manager over the platform's threads and events; made by newThreadManager.
///
/// A run takes a latch, claims a worker for each index (an idle one, else a new one), writes the
/// job into it, sets its priority and node, and posts it the message to run. Then it sleeps on the
/// latch. `lock` guards the two lists and is held for moments: never while a job runs, and never
/// while the lock of a worker's queue is taken, so the two can't deadlock.
class WinThreadManager final : public ThreadManager {
public:
    WinThreadManager();
    ~WinThreadManager();
    WinThreadManager(const WinThreadManager&) = delete;
    WinThreadManager& operator=(const WinThreadManager&) = delete;

    void terminateThreads(bool force) override;
    int runThreads(int numThreads, ThreadJob* job, ThreadProgress* progress,
                   bool reportProgress) override;
    void setLowPriority(int low) override { lowPriority = low; }
    int startTask(ThreadTask* task, void* arg) override;
    void setStackSize(int bytes) override { stackSize = bytes; }
    int getThreadIndex() override;

    /// As the free function getThreadPlacement.
    std::vector<ThreadPlacement> getPlacement(int numThreads);

private:
    class Run;  // one group at its job

    /// Reads the nodes of the machine, the first time that it is called; takes `lock`.
    void fillNumaInfo();
    /// A latch that no run uses, counting `numThreads`.
    Ref<ThreadLatch> takeLatch(int numThreads);
    /// A worker whose thread waits for a message; null if the system refuses to make one.
    Ref<WorkerThread> getWorker(ThreadProgress* progress);
    /// A worker that nobody else can claim from now on; with `isNew` it has no thread yet.
    Ref<WorkerThread> claimWorker(bool& isNew);
    /// The first worker of the list, taken out; null if there is none.
    WorkerThread* takeOutWorker();
    /// Tells a worker to end, waits for two seconds, kills it after that if `force` is set, and
    /// drops the manager's reference.
    void endWorker(WorkerThread& worker, bool force);
    platform::ThreadPriority getPriority() const;

    NumaInfo numaInfo;
    Sequence<WorkerThread*> threads{10};  // in the order of their making; null if taken out
    Sequence<ThreadLatch*> latches{10};   // kept from run to run, until terminateThreads
    PlainCriticalSection lock;            // of the three above and of the latches' `busy`
    std::atomic<int> lowPriority{0};      // these two may be set while a run starts its threads
    std::atomic<int> stackSize{0};        // in bytes, 0: the system's default
    platform::ThreadSlot tlsIndex;        // in each worker, its WorkerThread
};

}  // namespace Tarnkit
