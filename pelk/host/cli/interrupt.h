#pragma once

#include <atomic>

namespace Tarnkit {

/// Handles SIGINT (Ctrl-C) and SIGTERM while it lives. The first one asks the render to stop, which
/// writes what it has, and says so where standard error is a terminal; a second one ends the
/// program at once, and takes away a picture file that is half written. A signal that was ignored
/// when the program started, as `nohup` does, stays ignored. Handlers are the process's, so there
/// may be only one guard at a time.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    /// True from the first signal on; written by the handler, to be read by any thread.
    const std::atomic<bool>& wasRequested() const;
};

/// Ignores SIGXFSZ: a write past the largest size that files may have then fails as one on a full
/// disk does, with a message, instead of ending the program without one.
void ignoreFileSizeSignal();

}  // namespace Tarnkit
