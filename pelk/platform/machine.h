#pragma once

#include <cstdint>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// Processors that this process may use, at least 1: fewer than the machine has where the user, or
/// a container, has bound the process to some. The default number of render threads.
PELK_API int processorCount();

/// A clock for measuring how long something took: ticks from an arbitrary start, which go on evenly
/// whatever is done to the wall clock. `tickFrequency` of them are a second. Any thread.
PELK_API std::int64_t tickCount();
inline constexpr std::int64_t tickFrequency = 1000000000;

/// The time in seconds since the start of 1970, UTC. May jump, when somebody sets the clock.
PELK_API std::int64_t wallTime();

/// A moment by the calendar.
struct LocalTime {
    int year, month, day;  ///< month and day count from 1
    int hour, minute, second;
};

/// A wall time in the time zone that the system or the user has set. False, with `local` untouched,
/// for a time of a year that is no int. Any thread.
PELK_API bool localTime(std::int64_t wallTime, LocalTime& local);

}  // namespace Tarnkit::platform
