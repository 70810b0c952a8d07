#pragma once

namespace Tarnkit {

/// Formats as printf does into a buffer of `size` bytes and ends the text there. The answer is its
/// length, or -1 if it did not fit or can't be formatted; the buffer then holds what fits. A
/// `size` below 1 gives 0 and leaves the buffer alone.
int boundedFormat(char* buffer, int size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace Tarnkit
