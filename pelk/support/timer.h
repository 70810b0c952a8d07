#pragma once

#include <cstdint>

namespace Tarnkit {

/// Units in which a Timer tells time.
inline constexpr int kMilliseconds = 1;
inline constexpr int kMicroseconds = 2;
inline constexpr int kNanoseconds = 3;

/// A stopwatch with a lap counter, on a clock that nobody sets. All times are whole units, rounded
/// down; with a unit that is none of the three above, or without a clock (a `frequency` of 0), they
/// are 0. For one thread at a time.
class Timer {
public:
    /// Runs from here on.
    Timer();

    /// The finest unit that the clock can tell apart, 0 if not even milliseconds.
    int getResolution() const;
    /// Nanoseconds in one count of the clock, rounded down.
    std::int64_t getTickLength() const;
    /// The time since the start; both the start and the lap are now.
    std::int64_t restart(int unit);
    /// The time since the start. Changes nothing.
    std::int64_t getElapsed(int unit) const;
    /// The time since the last lap, or since the start; the lap is now.
    std::int64_t lap(int unit);

    std::int64_t frequency;  ///< counts of the clock in a second
    std::int64_t start;      ///< count at which the time began
    std::int64_t last;       ///< count at which the lap began

private:
    std::int64_t toUnit(std::int64_t counts, int unit) const;
};

}  // namespace Tarnkit
