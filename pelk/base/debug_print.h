#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

/// Formats a text as printf does and sends it to the debug stream. What is beyond 4,095
/// characters is cut. Never allocates; any thread may call.
PELK_API void debugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace Tarnkit
