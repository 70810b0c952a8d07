#pragma once

#include <cstdint>

namespace Tarnkit {

// Numbers to text and back, by the same rules in every locale but for localizeDecimal. Nothing is
// allocated, and calls on different buffers may overlap. A buffer without `size` has room for what
// is told beside it, the end included.

/// The number that the whole of `text` is: white space, one `-`, one `+`, decimal digits, each of
/// which may be missing. A `+` behind the `-` takes it back, so "-+5" is 5. Any other character,
/// white space behind the digits too, makes the result 0, and so does null. No test is made for
/// numbers that don't fit: they wrap round.
int parseInt(const char* text);
std::int64_t parseInt64(const char* text);

/// Writes a number in a base from 2 to 16, digits from "0123456789ABCDEF"; another base gives an
/// empty text. A negative number has its sign in base 10 alone, in others it is written as its
/// magnitude. In `size` bytes: digits that don't fit are dropped from the left, and a sign without
/// room takes the place of the leftmost. A size below 1 writes nothing.
void intToText(int value, char* buffer, int base, int size);
void int64ToText(std::int64_t value, char* buffer, int base, int size);

/// Writes a number in decimal; 21 bytes.
void toDecimalText(std::int64_t value, char* buffer);
void toUnsignedDecimalText(std::uint64_t value, char* buffer);

/// Writes a number in decimal with `,` between groups of three, as in "-1,234,567"; 27 bytes.
void toGroupedText(std::int64_t value, char* buffer);

/// Copies a number's text with the decimal point of the program's locale in place of its first `.`
/// or `,`, for people to read. `dst` is not `src` and has room for the text, with a point as long
/// as the locale's.
void localizeDecimal(const char* src, char* dst);

/// Writes a version, which has major, minor and patch number in the bits from 16, 8 and 0 on, in
/// the form "1.02.0f": hexadecimal, the latter two in two digits. Answers as boundedFormat.
int versionText(unsigned version, char* buffer, int size);

}  // namespace Tarnkit
