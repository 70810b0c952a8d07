#pragma once

#include <atomic>

namespace Tarnkit {

/// While it lives, the first Ctrl-C, or a request to terminate, asks the render to stop, and says
/// so where standard error is a terminal; a second one ends the program at once, without leaving
/// a half-written picture. Signals that the caller of the program wanted ignored stay so. There is
/// one guard at a time.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    const std::atomic<bool>& wasRequested() const;
};

/// A write past the largest size that files may have is to fail like one on a full disk, not end
/// the program.
void ignoreFileSizeSignal();

}  // namespace Tarnkit
