#include "pelk/host/cli/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "pelk/host/cli/json_output.h"

namespace Tarnkit {

namespace {

/// How far a render has come and what is left of it; the last two are -1 before the first sample.
struct Estimate {
    double percent, samplesPerSecond, remainingSeconds;
};

Estimate estimate(long long done, long long total, double seconds) {
    const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
    const bool known = done > 0 && seconds > 0.0;
    return {share * 100.0, known ? static_cast<double>(done) / seconds : -1.0,
            known ? seconds * (1.0 - share) / share : -1.0};
}

}  // namespace

std::string shortNumber(double value) {
    constexpr const char* kLetters[] = {"", " k", " M", " G", " T"};
    std::size_t letter = 0;
    // 999.5 would be shown as 1000.
    for (; value >= 999.5 && letter + 1 < std::size(kLetters); ++letter)
        value /= 1000.0;
    const int decimals = value >= 99.95 || letter == 0 ? 0 : value >= 9.995 ? 1 : 2;
    char text[64];
    std::snprintf(text, sizeof text, "%.*f%s", decimals, value, kLetters[letter]);
    return text;
}

std::string clockTime(double seconds) {
    const long long all = std::llround(std::clamp(seconds, 0.0, 1e12));
    char text[64];
    if (all < 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld", all / 60, all % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", all / 3600, all / 60 % 60, all % 60);
    return text;
}

void TerminalProgress::update(long long done, long long total, double seconds) {
    const Estimate now = estimate(done, total, seconds);
    char percent[32];
    std::snprintf(percent, sizeof percent, "%5.1f %%", now.percent);
    std::string line = percent;
    if (now.samplesPerSecond >= 0.0)
        line += "   " + shortNumber(now.samplesPerSecond) + " samples/s   " +
                clockTime(now.remainingSeconds) + " left";
    status.show(line);
}

void JsonProgress::update(long long done, long long total, double seconds) {
    const Estimate now = estimate(done, total, seconds);
    const auto known = [](double value) { return value >= 0.0 ? Json(value) : Json(); };
    Json event{{"event", "progress"},
               {"percent", now.percent},
               {"samples", done},
               {"total_samples", total},
               {"seconds", seconds},
               {"samples_per_second", known(now.samplesPerSecond)},
               {"remaining_seconds", known(now.remainingSeconds)}};
    if (frame)
        event["frame"] = *frame;
    printJson(event, -1);
}

}  // namespace Tarnkit
