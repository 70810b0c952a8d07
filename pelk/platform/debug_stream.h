#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// Takes one zero-terminated text. May be called by several threads at once.
using DebugSink = void (*)(const char* text);

/// Sends a text to the debug stream: standard error, in one piece, or the sink that was set.
/// Does not allocate.
PELK_API void writeDebug(const char* text);

/// Puts `sink` in place of standard error, null puts standard error back. Returns the sink that
/// stood before, null for standard error.
PELK_API DebugSink setDebugSink(DebugSink sink);

/// Writes a text to the standard output at once, past any buffer. Does not allocate.
PELK_API void writeOutput(const char* text);

/// The same for the standard error, whatever sink is set. A signal handler may call.
PELK_API void writeErrorOutput(const char* text);

}  // namespace Tarnkit::platform
