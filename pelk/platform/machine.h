#pragma once

#include <cstdint>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// Processors that this process may use, at least 1.
PELK_API int processorCount();

/// A count of steady ticks, `tickFrequency` to the second, from an arbitrary start.
PELK_API std::int64_t tickCount();
inline constexpr std::int64_t tickFrequency = 1000000000;

/// The time in seconds since the start of 1970 in Greenwich.
PELK_API std::int64_t wallTime();

struct LocalTime {
    int year, month, day;  ///< month and day count from 1
    int hour, minute, second;
};

/// A wall time as clocks and calendars at this place show it.
PELK_API LocalTime localTime(std::int64_t wallTime);

}  // namespace Tarnkit::platform
