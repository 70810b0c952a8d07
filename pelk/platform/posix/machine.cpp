#include "pelk/platform/machine.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace Tarnkit::platform {

int processorCount() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
        return std::max(1, CPU_COUNT(&allowed));
    // The set is too small for this machine; the number of processors at work is near enough.
    return std::max(1L, sysconf(_SC_NPROCESSORS_ONLN));
}

std::int64_t tickCount() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::int64_t wallTime() {
    return std::time(nullptr);
}

bool localTime(std::int64_t wallTime, LocalTime& local) {
    const std::time_t time = wallTime;
    std::tm fields{};
    if (!localtime_r(&time, &fields))
        return false;
    local = {.year = fields.tm_year + 1900,
             .month = fields.tm_mon + 1,
             .day = fields.tm_mday,
             .hour = fields.tm_hour,
             .minute = fields.tm_min,
             .second = fields.tm_sec};
    return true;
}

}  // namespace Tarnkit::platform
