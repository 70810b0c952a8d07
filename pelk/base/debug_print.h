#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

/// Formats a text as printf does and sends it to the debug stream, which is standard error unless
/// a test or host has put a sink in its place (platform/debug_stream.h). For developers, where no
/// MessageLog is at hand: below the contract, and on the way to a memory failure. What a user
/// should read goes to the renderer's log.
///
/// Never allocates and takes no lock: it reports that memory has run out, when neither may be
/// relied on. The text is built in 4,096 bytes of the caller's stack, and what is beyond 4,095
/// characters is cut. Any thread may call; a text is sent in one piece, so lines of several threads
/// don't mix. No line end is added, and failure to write is passed over.
PELK_API void debugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace Tarnkit
