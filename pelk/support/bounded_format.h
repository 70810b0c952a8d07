#pragma once

namespace Tarnkit {

/// Formats as printf does into a buffer of `size` bytes and ends the text there, whatever happens.
/// The answer is its length without the end, or -1 if the text did not fit or can't be formatted;
/// the buffer then holds the `size` - 1 characters that fit. A `size` below 1 gives 0 and leaves
/// the buffer, which may be null then, alone.
///
/// For texts that a cut would make wrong, such as paths: snprintf answers with the length that
/// would have been needed, which looks like success to whoever tests for below 0 alone.
int boundedFormat(char* buffer, int size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace Tarnkit
