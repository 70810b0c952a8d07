#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "pelk/base/shared_field.h"
#include "pelk/support/thread_manager.h"

namespace Tarnkit {

class MessageLog;

/// Lets a unique_ptr own a thread manager, whose destructor is not virtual.
struct ThreadManagerDeleter {
    void operator()(ThreadManager* manager) const { deleteThreadManager(manager); }
};
using OwnedThreadManager = std::unique_ptr<ThreadManager, ThreadManagerDeleter>;

/// One thread of a run, as its work sees it. Lives on that thread's stack while the work runs.
class Worker {
public:
    Worker(int index, int& abort) : threadIndex(index), abortFlag(abort) {}

    int getThreadIndex() const { return threadIndex; }
    /// True once the run is to end early. Work that is in hand may be finished.
    bool mustStop() const { return readShared(abortFlag) != 0; }

private:
    const int threadIndex;
    int& abortFlag;
};

/// A group of threads, and who follows what they do.
struct WorkerGroup {
    ThreadManager& manager;
    int threads;                    ///< above 0
    const std::atomic<bool>& stop;  ///< may be set at any moment, and ends the run early
    /// Called about every 200 ms, on the caller's thread; may be empty. What it throws ends the
    /// run.
    std::function<void()> report = {};
    MessageLog* log = nullptr;  ///< may be null
};

/// Runs `work` on the threads of a group, 0 to `threads` - 1, and returns when all have ended. As
/// the system may refuse some of them, which is a warning, they draw their work from a common
/// store. The first exception on any of the threads ends the run and is thrown again here; if
/// there is no thread at all, that is an ExceptionMsg. Nothing runs if `stop` is set already.
void runWorkers(const WorkerGroup& group, const std::function<void(Worker&)>& work);

}  // namespace Tarnkit
