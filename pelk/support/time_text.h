#pragma once

#include <cstdint>

namespace Tarnkit {

/// Writes a length of time as in " 1h 30m  5.2s"; 32 bytes. Reckoned in single precision, so the
/// tenths of very long times are rounded. A time of 2^31 hours and more reads as 2^31 - 1.
void formatDuration(std::int64_t milliseconds, char* buffer);

/// Writes the time of day as in "09:05:00", by the time zone of the system or user. `time`: seconds
/// since the start of 1970, UTC. Answers as boundedFormat; 0, with an empty text, for a time of a
/// year that the calendar can't name. Any thread.
int clockText(char* buffer, int size, std::int64_t time);

/// Writes the date as in "2024/Feb/29", the month in English. Else as clockText.
int dateText(char* buffer, int size, std::int64_t time);

}  // namespace Tarnkit
