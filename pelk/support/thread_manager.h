#pragma once

#include <vector>

#include "pelk/base/types.h"

namespace Tarnkit {

/// What a group of threads runs, such as "render tiles until there are none". Owned by the caller
/// of ThreadManager::runThreads, and must live until that returns; no worker touches it afterwards.
class ThreadJob {
public:
    /// One call on each thread of the group, at the same time. Must not throw: no one catches on a
    /// worker, so the program would end.
    ///
    /// `abortFlag` turns from 0 to another value when the run is to end early. Nothing stops a job
    /// by force: it looks at the flag between pieces of work. A thread that gets its message after
    /// that skips the job altogether.
    ///
    /// `progress` is this thread's own counter, 0 at first, which the job may raise. Each thread
    /// has one, so that counting takes no lock and no cache line goes round; the waiting thread
    /// adds them up. Other threads read or write both meanwhile: use `readShared` and `writeShared`
    /// of base/shared_field.h on them.
    ///
    /// `threadIndex` counts from 0 to `numThreads` - 1 and is nobody else's in this group: the
    /// index of what a thread keeps for itself, such as its pool of samplers. A thread that the
    /// system refuses is missing from the group, so work that must be done by someone is taken from
    /// a common store and not cut up by `threadIndex`.
    virtual void run(int* abortFlag, int* progress, int threadIndex, int numThreads) = 0;
    /// The thread's name in debuggers while it is on this job; null leaves the one it has. Asked on
    /// each thread before `run`.
    virtual const char* getThreadName() = 0;

    /// What the job may count beside its threads' counters, such as work that was done before. Set
    /// to 0 at the start of a run; part of the sum that ThreadProgress::setProgress gets.
    int baseProgress = 0;
    /// Where `abortFlag` points, and what `runThreads` returns. Set to 0 at the start of a run; the
    /// job may set it itself.
    int abort = 0;

protected:
    ~ThreadJob() = default;
};

/// What a single thread runs while its starter goes on. Owned by the starter, and must live until
/// `run` has returned, which only the task itself can tell anybody.
class ThreadTask {
public:
    /// `arg`: what was given to ThreadManager::startTask. Must not throw.
    virtual void run(void* arg) = 0;
    /// The thread's name in debuggers; null leaves the one it has.
    virtual const char* getThreadName() = 0;

protected:
    ~ThreadTask() = default;
};

/// Follows a run, as a progress bar does, and can end it. Owned by the caller of `runThreads`. All
/// calls come on the thread of that caller, so an implementation needs no lock and may draw.
class ThreadProgress {
public:
    /// The sum of all counters of the group and of `baseProgress`, about every 200 ms, if the run
    /// was asked to report.
    virtual void setProgress(int total) = 0;
    /// Asked about every 200 ms. Any value but 0 asks the job to abort, and is what `runThreads`
    /// then returns: a host can tell "the user stopped" from "the disk is full" by it.
    virtual int checkAbort() = 0;
    /// Anything but 0 if the calling thread must keep handling its events while it waits, as the
    /// thread that owns a window must.
    virtual int needsEventPump() = 0;
    /// Handles the events that wait. Called only after `needsEventPump` said so.
    virtual void pumpEvents() = 0;
    /// A line for the status bar, formatted as by printf. The two numbers are a place and a range
    /// of progress, which this manager gives as 0 of 30,000: it only knows that something happens.
    virtual void status(int, int, const char* format, ...)
        __attribute__((format(printf, 4, 5))) = 0;
    /// Once in each run, before any thread is set up.
    virtual void beginThreads() = 0;
    /// Once in each run, after the last thread has finished, also when the run ends by an
    /// exception.
    virtual void endThreads() = 0;

protected:
    ~ThreadProgress() = default;
};

/// A pool of threads that live from run to run: a run posts a message to sleeping threads and makes
/// none once the pool is large enough. The host makes one by newThreadManager; it serves any number
/// of renders. All operations but `terminateThreads` may be called by several threads at once, and
/// runs may overlap: each gets threads of its own.
///
///     struct Tiles : ThreadJob { ... } job;
///     ThreadManager* manager = newThreadManager();
///     manager->runThreads(0, &job, nullptr, false);  // as many threads as getNumThreads()
///     deleteThreadManager(manager);
///
/// **Environment.** PELK_NUM_THREADS: how many threads a group has if it isn't told (a number from
/// 1 on; anything else counts as unset). PELK_USE_THREAD_AFFINITY: set to 0, or to a text that
/// reads as 0, it switches off all that looks at NUMA nodes. Both are for machines that several
/// programs share, where a thread bound to a busy node would wait while other processors idle.
///
/// **NUMA.** On a machine of several memory nodes each thread of a group is bound to one node,
/// whose memory it reaches fastest: threads fill the first node up to its number of processors,
/// then the next, and start over behind the last. On a machine of one node nothing is bound.
class ThreadManager {
public:
    /// Ends all threads, waiting up to two seconds for each, and frees what the manager keeps for
    /// runs. To be called when no run is under way; tasks may be. The manager can be used
    /// afterwards, and makes new threads then.
    ///
    /// A thread that has not ended by then is left to finish alone if `force` is false; its record
    /// lives as long as it does. If `force` is true it is killed where it stands: no destructor on
    /// its stack runs and no lock that it holds is ever released, that of the heap included, so the
    /// next allocation of any thread may wait for ever. It is therefore for programs that are about
    /// to end and must not be kept from it.
    virtual void terminateThreads(bool force) = 0;

    /// Runs a job on a group of `numThreads` threads, below 1 standing for `getNumThreads()`, and
    /// returns when the last of them has finished, with what the job's `abort` then holds: 0 if
    /// nobody asked to abort. The calling thread waits and never runs the job itself.
    ///
    /// `progress` may be null; about every 200 ms it is asked whether to abort, and told how far
    /// the job is if `reportProgress` is set.
    ///
    /// Threads that the system refuses are missing from the group, in the worst case all of them;
    /// the result doesn't tell, so a job that must know counts its calls. Throws an ExceptionMsg
    /// for lack of memory, and what `progress` throws, but not before all threads have finished.
    virtual int runThreads(int numThreads, ThreadJob* job, ThreadProgress* progress,
                           bool reportProgress) = 0;

    /// Not 0 starts all later runs and tasks at a priority below normal, so that other programs of
    /// the machine come first; 0 at the normal one. Work under way keeps what it has.
    virtual void setLowPriority(int low) = 0;

    /// Starts a task on a thread of its own, which may use all processors of the process, and
    /// returns 0 at once. The task must live until it has been run. If the system refuses the
    /// thread the answer is -1, and the task is not run. Throws an ExceptionMsg for lack of memory.
    virtual int startTask(ThreadTask* task, void* arg) = 0;

    /// In bytes, 0 for the system's default; holds for threads that are made from now on, so it
    /// comes before the first run. Shading recurses with every reflected ray, so scenes of many
    /// bounces may need more than the default.
    virtual void setStackSize(int bytes) = 0;

    /// The index of the calling thread in its latest group, not its place in the pool; -1 if it is
    /// no thread of this manager, as the caller of `runThreads`.
    virtual int getThreadIndex() = 0;

protected:
    ~ThreadManager() = default;
};

/// A manager without threads yet, which the caller ends by deleteThreadManager. Lack of memory is
/// an ExceptionMsg.
ThreadManager* newThreadManager();

/// Ends the manager's threads as `terminateThreads(false)` does, and frees it. No run may be under
/// way on it. A task that takes longer than the two seconds goes on by itself. Null is ignored.
void deleteThreadManager(ThreadManager* manager);

/// How many threads the process uses if it isn't told otherwise: PELK_NUM_THREADS if that is a
/// number above 0, else one for each processor of the machine, those of all processor groups
/// included. Settled when the program starts: a change of the environment comes too late.
int getNumThreads();

/// The same, but no more than there are processors that this process may use, as a batch system or
/// `taskset` limits them. `getNumThreads()` if the system does not tell.
int getNumProcessThreads();

/// What `getNumThreads` would be if the program started now.
int detectNumThreads();

/// A thread of a group, and the processors that it is bound to.
struct ThreadPlacement {
    int threadIndex;  ///< as ThreadJob::run gets it, from 0
    int node;         ///< place in the system's list of NUMA nodes
    u16 group;        ///< processors 64 group to 64 group + 63
    u64 mask;         ///< those of them that the thread is bound to, lowest bit first
};

/// Where `runThreads` puts the threads of a group of this size, 0 as there; for reports. Empty if
/// it leaves that to the system: on a machine of one node, or with PELK_USE_THREAD_AFFINITY set to
/// 0. `manager` comes from newThreadManager.
std::vector<ThreadPlacement> getThreadPlacement(ThreadManager* manager, int groupSize);

}  // namespace Tarnkit
