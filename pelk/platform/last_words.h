#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// Stops the calling thread for good, with all that stands on its stack, and leaves the others. For
/// one that has faulted: its code can't go on, and can't be unwound safely.
[[noreturn]] PELK_API void parkThread();

/// Ends the process with `exitCode` once so many seconds are over, or at once when it aborts
/// itself, as the heap does where it finds itself damaged. Before that calls `last`,
/// which may do what a signal handler may. For the last steps of a process of which a thread has
/// faulted: the next step may wait for the heap's lock for ever.
PELK_API void endProcessWithin(int seconds, int exitCode, void (*last)());

}  // namespace Tarnkit::platform
