#include "pelk/support/timer.h"

#include "pelk/platform/machine.h"

namespace Tarnkit {

namespace {

/// How many of each unit are a second, by its number.
constexpr std::int64_t kUnitsPerSecond[] = {0, 1000, 1000000, 1000000000};

}  // namespace

Timer::Timer() : frequency(platform::tickFrequency), start(platform::tickCount()), last(start) {}

int Timer::getResolution() const {
    int unit = kNanoseconds;
    while (unit > 0 && frequency < kUnitsPerSecond[unit])
        --unit;
    return unit;
}

std::int64_t Timer::getTickLength() const {
    return frequency == 0 ? 0 : kUnitsPerSecond[kNanoseconds] / frequency;
}

std::int64_t Timer::restart(int unit) {
    const std::int64_t now = platform::tickCount(), time = toUnit(now - start, unit);
    start = last = now;
    return time;
}

std::int64_t Timer::getElapsed(int unit) const {
    return toUnit(platform::tickCount() - start, unit);
}

std::int64_t Timer::lap(int unit) {
    const std::int64_t now = platform::tickCount(), time = toUnit(now - last, unit);
    last = now;
    return time;
}

std::int64_t Timer::toUnit(std::int64_t counts, int unit) const {
    if (unit < kMilliseconds || unit > kNanoseconds || frequency == 0)
        return 0;
    // Whole seconds apart: the product of all counts would leave 64 bits after nine seconds.
    const std::int64_t perSecond = kUnitsPerSecond[unit];
    return counts / frequency * perSecond + counts % frequency * perSecond / frequency;
}

}  // namespace Tarnkit
