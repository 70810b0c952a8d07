#pragma once

#include "pelk/base/critical_section.h"
#include "pelk/base/sequence.h"
#include "pelk/platform/tls.h"
#include "pelk/support/numa_info.h"
#include "pelk/support/thread_manager.h"
#include "pelk/support/worker_thread.h"

namespace Tarnkit {

/// The thread manager over the platform's threads and events.
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

    std::vector<ThreadPlacement> getPlacement(int numThreads);

private:
    class Run;

    void fillNumaInfo();
    Ref<ThreadLatch> takeLatch(int numThreads);
    Ref<WorkerThread> getWorker(ThreadProgress* progress);
    Ref<WorkerThread> claimWorker(bool& isNew);
    WorkerThread* takeOutWorker();
    void endWorker(WorkerThread& worker, bool force);
    platform::ThreadPriority getPriority() const;

    NumaInfo numaInfo;
    Sequence<WorkerThread*> threads{10};  // in the order of their making; null if taken out
    Sequence<ThreadLatch*> latches{10};
    PlainCriticalSection lock;  // of the three above and of the latches' `busy`
    std::atomic<int> lowPriority{0};
    std::atomic<int> stackSize{0};
    platform::ThreadSlot tlsIndex;  // in each worker, its WorkerThread
};

}  // namespace Tarnkit
