#include "pelk/base/debug_print.h"

#include <cstdarg>
#include <cstdio>

#include "pelk/platform/debug_stream.h"

namespace Tarnkit {

void debugPrint(const char* format, ...) {
    char text[4096] = {};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    platform::writeDebug(text);
}

}  // namespace Tarnkit
