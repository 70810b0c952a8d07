#pragma once

#include <vector>

#include "pelk/base/types.h"

namespace Tarnkit {

/// What a group of threads runs.
class ThreadJob {
public:
    /// One call on each thread of the group, at the same time. `abortFlag` turns to non-zero when
    /// the run is to end early; `progress` is this thread's own counter, 0 at first, which the
    /// job may raise. Other threads look at both meanwhile, so use `readShared` and `writeShared`
    /// of frame/shared_field.h on them. `threadIndex` counts from 0 to `numThreads` - 1. A thread
    /// that the system refuses is missing from the group, so work that must be done by someone is
    /// taken from a common store and not cut up by `threadIndex`.
    virtual void run(int* abortFlag, int* progress, int threadIndex, int numThreads) = 0;
    /// For debuggers; null leaves the thread's name.
    virtual const char* getThreadName() = 0;

    int baseProgress = 0;  ///< what the job may count beside its threads; 0 at the start of a run
    int abort = 0;         ///< where `abortFlag` points, and what `runThreads` returns

protected:
    ~ThreadJob() = default;
};

/// What a single thread runs while its starter goes on.
class ThreadTask {
public:
    virtual void run(void* arg) = 0;
    /// For debuggers; null leaves the thread's name.
    virtual const char* getThreadName() = 0;

protected:
    ~ThreadTask() = default;
};

/// Follows a run. All calls come on the thread that called `runThreads`.
class ThreadProgress {
public:
    virtual void setProgress(int total) = 0;
    /// Non-zero asks the job to abort, and is what `runThreads` then returns.
    virtual int checkAbort() = 0;
    /// Non-zero if the calling thread must keep handling its events while it waits.
    virtual int needsEventPump() = 0;
    virtual void pumpEvents() = 0;
    virtual void status(int, int, const char* format, ...)
        __attribute__((format(printf, 4, 5))) = 0;
    virtual void beginThreads() = 0;
    virtual void endThreads() = 0;

protected:
    ~ThreadProgress() = default;
};

/// A pool of threads that live from run to run. All operations but `terminateThreads` may be
/// called by several threads at once.
class ThreadManager {
public:
    /// Ends all threads, waiting up to two seconds for each. One that has not ended by then is
    /// killed if `force` is set, and otherwise left to finish alone. A killed thread releases
    /// nothing that it holds, locks of the runtime included, so this is for programs that end.
    /// The manager can be used afterwards.
    virtual void terminateThreads(bool force) = 0;

    /// Runs a job on a group of `numThreads` threads, 0 being `getNumThreads()`, and returns when
    /// the last of them has finished, with what the job's `abort` then holds. `progress` may be
    /// null; about every 200 ms it is asked whether to abort, and told how far the job is if
    /// `reportProgress` is set.
    virtual int runThreads(int numThreads, ThreadJob* job, ThreadProgress* progress,
                           bool reportProgress) = 0;

    /// Non-zero starts all later work at a priority below normal.
    virtual void setLowPriority(int low) = 0;

    /// Starts a task on a thread of its own and returns 0 at once. The task must live until it has
    /// been run. If the system refuses the thread the answer is -1, and the task is not run.
    virtual int startTask(ThreadTask* task, void* arg) = 0;

    /// In bytes, 0 for the system's default; holds for threads that are made from now on.
    virtual void setStackSize(int bytes) = 0;

    /// The index of the calling thread in its latest group; -1 if it is no thread of this manager.
    virtual int getThreadIndex() = 0;

protected:
    ~ThreadManager() = default;
};

ThreadManager* newThreadManager();

/// Ends the manager's threads as `terminateThreads(false)` does. No run may be under way on it.
/// Null is ignored.
void deleteThreadManager(ThreadManager* manager);

/// How many threads the process uses if it isn't told otherwise: PELK_NUM_THREADS if that is a
/// number above 0, else one for each processor. Settled when the program starts.
int getNumThreads();

/// The same, but no more than there are processors that this process may use.
int getNumProcessThreads();

/// What `getNumThreads` would be if the program started now.
int detectNumThreads();

/// A thread of a group, and the processors that it is bound to.
struct ThreadPlacement {
    int threadIndex;
    int node;   ///< place in the system's list of NUMA nodes
    u16 group;  ///< processors 64 group to 64 group + 63
    u64 mask;   ///< those of them that the thread is bound to, lowest bit first
};

/// Where `runThreads` puts the threads of a group of this size, 0 as there. Empty if it leaves
/// that to the system: on a machine of one node, or with PELK_USE_THREAD_AFFINITY set to 0.
std::vector<ThreadPlacement> getThreadPlacement(ThreadManager* manager, int groupSize);

}  // namespace Tarnkit
