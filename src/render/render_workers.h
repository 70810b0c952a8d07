#pragma once

#include <functional>

namespace Tarnkit {

/// Runs `job(threadIndex)` on `threads` threads at once, 0 to `threads` - 1, and returns when all
/// have ended. The first exception that a job throws is thrown again here.
void runWorkers(int threads, const std::function<void(int)>& job);

/// The number of threads that a machine keeps busy.
int defaultWorkerCount();

}  // namespace Tarnkit
