#include "render/render_workers.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace Tarnkit {

void runWorkers(int threads, const std::function<void(int)>& job) {
    std::mutex mutex;
    std::exception_ptr failure;
    const auto guarded = [&](int index) {
        try {
            job(index);
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (!failure)
                failure = std::current_exception();
        }
    };
    std::vector<std::jthread> workers;
    for (int index = 1; index < threads; ++index)
        workers.emplace_back(guarded, index);
    guarded(0);
    workers.clear();  // joins
    if (failure)
        std::rethrow_exception(failure);
}

int defaultWorkerCount() {
    return std::max(1u, std::thread::hardware_concurrency());
}

}  // namespace Tarnkit
