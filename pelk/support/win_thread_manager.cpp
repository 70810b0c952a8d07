#include "pelk/support/win_thread_manager.h"

#include "pelk/base/debug_print.h"
#include "pelk/base/shared_field.h"
#include "pelk/platform/machine.h"

namespace Tarnkit {

namespace {

using Lock = ScopedLock<PlainCriticalSection>;

bool needsPump(ThreadProgress* progress) {
    return progress && progress->needsEventPump();
}

/// Waits until a worker has ended, two seconds at most; false if it has not by then.
bool waitForEnd(const WorkerThread& worker) {
    const auto deadline = platform::tickCount() + 2 * platform::tickFrequency;
    while (worker.state != WorkerThread::ended) {
        if (platform::tickCount() >= deadline)
            return false;
        platform::sleepFor(1);
    }
    return true;
}

/// The records of killed threads, which are never freed: a killed thread can't drop its reference,
/// and a job that it was on may still hold pointers into the record. The list keeps them reachable,
/// so that leak checkers don't report them.
constinit std::atomic<WorkerThread*> killedWorkers{nullptr};

void keepForGood(WorkerThread& worker) {
    worker.nextKilled = killedWorkers;
    while (!killedWorkers.compare_exchange_weak(worker.nextKilled, &worker)) {
    }
}

/// Calls beginThreads and, on every way out of the scope, endThreads of a run's progress object,
/// which may be null.
class ThreadsPhase {
public:
    explicit ThreadsPhase(ThreadProgress* follower) : progress(follower) {
        if (progress)
            progress->beginThreads();
    }
    ~ThreadsPhase() {
        if (progress)
            progress->endThreads();
    }
    ThreadsPhase(const ThreadsPhase&) = delete;
    ThreadsPhase& operator=(const ThreadsPhase&) = delete;

private:
    ThreadProgress* const progress;
};

}  // namespace

/// One group of threads on one job. The destructor waits for all threads that were started, also
/// when an exception leaves runThreads: the job and the latch's counters belong to the caller's
/// scope, and no thread may see them after that has gone.
class WinThreadManager::Run {
public:
    Run(WinThreadManager& owner, ThreadJob& groupJob, int numThreads)
        : manager(owner),
          job(groupJob),
          groupSize(numThreads),
          latch(manager.takeLatch(numThreads)),
          walk(manager.numaInfo) {}
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// Sets the next thread to work. False if the system refuses it.
    bool startNext(ThreadProgress* progress);

    /// Waits for all threads that were started.
    void wait(ThreadProgress* progress, bool reportProgress);

private:
    void prepare(WorkerThread& worker, GroupMember& member);
    /// Counts down the latch for the threads that were not started, as nobody else will.
    void countOffRest() { latch->countDown(groupSize - std::exchange(started, groupSize)); }
    int sumProgress();

    WinThreadManager& manager;
    ThreadJob& job;
    const int groupSize;
    const Ref<ThreadLatch> latch;
    NumaInfo::Walk walk;
    int started = 0;
};

WinThreadManager::Run::~Run() {
    countOffRest();
    while (!latch->wait()) {
    }
    latch->group.rewind();
    while (const GroupMember* member = latch->group.next())
        if (member->worker)
            Ref<WorkerThread>::drop(*member->worker);
    latch->group.reset();
    const Lock hold(manager.lock);
    latch->busy = 0;
}

bool WinThreadManager::Run::startNext(ThreadProgress* progress) {
    GroupMember& member = *latch->group.take();
    member.worker = nullptr;
    member.lastProgress = 0;
    Ref<WorkerThread> worker = manager.getWorker(progress);
    if (worker.isNull())
        return false;
    prepare(*worker, member);
    worker->handle.setPriority(manager.getPriority());
    if (manager.numaInfo.isUsed())
        manager.numaInfo.bind(worker->handle, walk.next());
    ++started;
    worker->post(WorkerThread::kRunJob);
    member.worker = worker.release();
    return true;
}

void WinThreadManager::Run::prepare(WorkerThread& worker, GroupMember& member) {
    member.lastProgress = GroupMember::kRunning;
    worker.job = &job;
    worker.abortFlag = &job.abort;
    writeShared(worker.progress, 0);
    worker.latch = latch;
    worker.member = &member;
    worker.groupSize = groupSize;
    worker.index = started;
    worker.owesCount = true;
}

void WinThreadManager::Run::wait(ThreadProgress* progress, bool reportProgress) {
    countOffRest();
    while (!latch->wait()) {
        if (!progress)
            continue;
        if (needsPump(progress))
            progress->pumpEvents();
        if (reportProgress)
            progress->setProgress(sumProgress());
        if (const int abort = progress->checkAbort())
            writeShared(job.abort, abort);
    }
}

int WinThreadManager::Run::sumProgress() {
    int sum = readShared(job.baseProgress);
    latch->group.rewind();
    while (const GroupMember* member = latch->group.next())
        if (member->worker)
            sum += member->getProgress();
    return sum;
}

WinThreadManager::WinThreadManager() : tlsIndex(platform::ThreadSlot::create()) {
    debugPrint("[WinThreadManager] Constructor.\n");
}

WinThreadManager::~WinThreadManager() {
    debugPrint("[WinThreadManager] Destructor.\n");
    terminateThreads(false);
    tlsIndex.destroy();
}

int WinThreadManager::runThreads(int numThreads, ThreadJob* job, ThreadProgress* progress,
                                 bool reportProgress) {
    if (numThreads < 1)
        numThreads = getNumThreads();
    writeShared(job->abort, 0);
    writeShared(job->baseProgress, 0);
    if (progress)
        progress->status(0, 30000, "Setting up %i thread(s)\n", numThreads);
    {
        const ThreadsPhase phase(progress);
        fillNumaInfo();
        Run run(*this, *job, numThreads);
        int started = 0;
        while (started < numThreads && run.startNext(progress))
            ++started;
        if (started < numThreads)
            debugPrint("[WinThreadManager] Could not start more than %i of %i threads\n", started,
                       numThreads);
        run.wait(progress, reportProgress);
    }
    if (progress) {
        progress->status(0, 30000, "Threads completed\n");
        if (progress->needsEventPump())
            progress->pumpEvents();
    }
    return readShared(job->abort);
}

int WinThreadManager::startTask(ThreadTask* task, void* arg) {
    const Ref<WorkerThread> worker = getWorker(nullptr);
    if (worker.isNull())
        return -1;
    worker->task = task;
    worker->taskArg = arg;
    worker->job = nullptr;
    worker->abortFlag = nullptr;
    writeShared(worker->progress, 0);
    worker->latch = {};
    worker->member = nullptr;
    worker->index = 0;
    worker->groupSize = 1;
    worker->handle.setPriority(getPriority());
    // Its last group may have bound it to a node.
    const platform::Topology& machine = platform::topology();
    platform::ProcessorSet process;
    if (machine.processAffinity(&process))
        machine.bindToProcessors(worker->handle, process);
    worker->post(WorkerThread::kRunTask);
    return 0;
}

int WinThreadManager::getThreadIndex() {
    const auto* worker = static_cast<const WorkerThread*>(tlsIndex.get());
    return worker ? worker->index : -1;
}

void WinThreadManager::terminateThreads(bool force) {
    int count = 0;
    {
        const Lock hold(lock);
        count = threads.size();
    }
    debugPrint("[WinThreadManager] Terminating %i threads\n", count);
    while (WorkerThread* worker = takeOutWorker())
        endWorker(*worker, force);
    {
        const Lock hold(lock);
        latches.rewind();
        while (ThreadLatch** latch = latches.next())
            Ref<ThreadLatch>::drop(**latch);
        latches.clear();
    }
    debugPrint("[WinThreadManager] All threads terminated\n");
}

std::vector<ThreadPlacement> WinThreadManager::getPlacement(int numThreads) {
    fillNumaInfo();
    std::vector<ThreadPlacement> placement;
    if (!numaInfo.isUsed())
        return placement;
    NumaInfo::Walk walk(numaInfo);
    for (int i = 0; i < (numThreads < 1 ? getNumThreads() : numThreads); ++i) {
        const int node = walk.next();
        const NumaNodeRecord& record = numaInfo.getNode(node);
        placement.push_back(
            {.threadIndex = i, .node = node, .group = record.group, .mask = record.mask});
    }
    return placement;
}

void WinThreadManager::fillNumaInfo() {
    const Lock hold(lock);
    numaInfo.fill();
}

/// A latch that no run uses, counting `numThreads`.
Ref<ThreadLatch> WinThreadManager::takeLatch(int numThreads) {
    const Lock hold(lock);
    ThreadLatch* latch = nullptr;
    latches.rewind();
    while (ThreadLatch** entry = latches.next()) {
        if (!(*entry)->busy) {
            latch = *entry;
            break;
        }
    }
    if (!latch) {
        Ref<ThreadLatch> made = Ref<ThreadLatch>::create();
        ThreadLatch** entry = latches.take();
        latch = *entry = made.release();
    }
    latch->busy = 1;
    latch->count = numThreads;
    latch->event.reset();
    return Ref<ThreadLatch>(*latch);
}

/// A worker that waits for a message, an idle one or a new one; null if the system refuses it.
Ref<WorkerThread> WinThreadManager::getWorker(ThreadProgress* progress) {
    bool isNew = false;
    Ref<WorkerThread> worker = claimWorker(isNew);
    if (!isNew)
        return worker;
    if (!worker->start(stackSize))
        return {};
    if (needsPump(progress)) {
        while (worker->state == WorkerThread::starting) {
            progress->pumpEvents();
            platform::sleepFor(1);
        }
    }
    return worker;
}

/// An idle worker that no other run can claim from now on, or a new one, which has no thread yet.
Ref<WorkerThread> WinThreadManager::claimWorker(bool& isNew) {
    const Lock hold(lock);
    WorkerThread* withoutThread = nullptr;
    threads.rewind();
    while (WorkerThread** entry = threads.next()) {
        if (!*entry)
            continue;
        int expected = WorkerThread::idle;
        if ((*entry)->state.compare_exchange_strong(expected, WorkerThread::handedOut))
            return Ref<WorkerThread>(**entry);
        if (expected == WorkerThread::ended)
            withoutThread = *entry;  // refused last time; the system may have recovered
    }
    isNew = true;
    if (withoutThread) {
        withoutThread->state = WorkerThread::starting;
        return Ref<WorkerThread>(*withoutThread);
    }
    Ref<WorkerThread> made = Ref<WorkerThread>::create(tlsIndex);
    *threads.take() = &*made;
    return Ref<WorkerThread>(*made.release());
}

/// The first worker of the list, which nobody can claim any more; null if none is left, and then
/// the list's memory goes back.
WorkerThread* WinThreadManager::takeOutWorker() {
    const Lock hold(lock);
    threads.rewind();
    while (WorkerThread** entry = threads.next())
        if (WorkerThread* worker = std::exchange(*entry, nullptr))
            return worker;
    threads.clear();
    return nullptr;
}

void WinThreadManager::endWorker(WorkerThread& worker, bool force) {
    worker.post(WorkerThread::kEnd);
    debugPrint("[WinThreadManager] Waiting for PGL thread to finish...\n");
    if (waitForEnd(worker)) {
        worker.handle.join();
    } else {
        debugPrint("[WinThreadManager] Thread did not terminate for the timeout interval\n");
        if (force && worker.handle.kill(0xFFFFFFFF)) {
            worker.settleCount();
            if (worker.state != WorkerThread::ended)  // it may have come to its end after all
                keepForGood(worker);
        }
    }
    Ref<WorkerThread>::drop(worker);
}

platform::ThreadPriority WinThreadManager::getPriority() const {
    return lowPriority ? platform::ThreadPriority::belowNormal : platform::ThreadPriority::normal;
}

}  // namespace Tarnkit
