#include "platform/terminal.h"

#include <unistd.h>

namespace Tarnkit::platform {

bool errorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace Tarnkit::platform
