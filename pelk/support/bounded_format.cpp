#include "pelk/support/bounded_format.h"

#include <cstdarg>
#include <cstdio>

namespace Tarnkit {

int boundedFormat(char* buffer, int size, const char* format, ...) {
    if (size < 1)
        return 0;
    buffer[0] = buffer[size - 1] = 0;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    buffer[size - 1] = 0;
    return length < 0 || length >= size ? -1 : length;
}

}  // namespace Tarnkit
