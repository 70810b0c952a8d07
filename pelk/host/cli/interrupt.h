#pragma once

#include <atomic>

#include "pelk/host/cli/commands.h"

namespace Tarnkit {

/// Handles the signals that ask the program to end while it lives: SIGINT (Ctrl-C), SIGTERM and
/// SIGHUP. The first one asks the render to stop, which writes what it has, and says so where
/// standard error is a terminal; a second one ends the program at once, and takes away a file that
/// is half written. A signal that was ignored when the program started, as `nohup` does, stays
/// ignored. Handlers are the process's, so there may be only one guard at a time.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    /// True from the first signal on; written by the handler, to be read by any thread.
    const std::atomic<bool>& wasRequested() const;
    /// What the program answers to its caller after the first signal: 128 and its number.
    ExitCode getExitCode() const;
};

}  // namespace Tarnkit
