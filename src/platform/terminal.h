#pragma once

#include "platform/api.h"

namespace Tarnkit::platform {

/// True if what goes to standard error is shown to a user, and not kept in a file or a pipe.
PELK_API bool errorIsTerminal();

}  // namespace Tarnkit::platform
