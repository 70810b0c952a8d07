#pragma once
// Put before each source of the build that scripts/plant makes: which planted fault is awake, and
// which faults a test program comes past. No other build knows this file.

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace planted {

inline constexpr int kMaxFaults = 2048;
inline std::atomic<bool> reached[kMaxFaults];

/// Adds the fault's number to the file that PELK_PLANTED_TRACE names. Takes no memory, as the
/// place of a fault may be one where none may be taken.
inline void trace(const char* file, int fault) {
    if (reached[fault].exchange(true, std::memory_order_relaxed))
        return;
    char line[16];
    const int length = std::snprintf(line, sizeof line, "%d\n", fault);
    const int out = open(file, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (out < 0)
        return;
    if (write(out, line, static_cast<size_t>(length)) != length)
        std::abort();
    close(out);
}

/// True if this fault is the one that PELK_PLANTED wakes.
inline bool awake(int fault) {
    static const char* const number = std::getenv("PELK_PLANTED");
    static const int chosen = number ? std::atoi(number) : -1;
    static const char* const file = std::getenv("PELK_PLANTED_TRACE");
    if (file)
        trace(file, fault);
    return fault == chosen;
}

}  // namespace planted
