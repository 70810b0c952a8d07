#pragma once

#include <atomic>

namespace Tarnkit {

/// While it lives, the first Ctrl-C asks the render to stop; a second one ends the program at
/// once. There is one at a time.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    const std::atomic<bool>& wasRequested() const;
};

}  // namespace Tarnkit
