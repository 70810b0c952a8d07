#include "pelk/support/time_text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "pelk/base/truncate.h"
#include "pelk/platform/machine.h"
#include "pelk/support/bounded_format.h"

namespace Tarnkit {

namespace {

constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

const char* monthName(int month) {
    return kMonths[std::clamp(month, 1, 12) - 1];
}

}  // namespace

void formatDuration(std::int64_t milliseconds, char* buffer) {
    const float seconds = static_cast<float>(milliseconds) * 0.001f;
    // The rest of the hour is exact; a fraction of it times 60 would make 6 minutes of some 7.
    const int hours = truncateToInt(seconds / 3600.0f);
    const int minutes = static_cast<int>(std::fmod(seconds, 3600.0f) / 60.0f);
    std::sprintf(buffer, "%2ih %2im %4.1fs", hours, minutes, std::fmod(seconds, 60.0f));
}

int clockText(char* buffer, int size, std::int64_t time) {
    platform::LocalTime local{};
    if (!platform::localTime(time, local))
        return boundedFormat(buffer, size, "%s", "");
    return boundedFormat(buffer, size, "%02i:%02i:%02i", local.hour, local.minute, local.second);
}

int dateText(char* buffer, int size, std::int64_t time) {
    platform::LocalTime local{};
    if (!platform::localTime(time, local))
        return boundedFormat(buffer, size, "%s", "");
    return boundedFormat(buffer, size, "%i/%s/%i", local.year, monthName(local.month), local.day);
}

}  // namespace Tarnkit
