#pragma once

#include <cstddef>

namespace Tarnkit {

// Between UTF-8, in which all texts of this library are, and the UTF-16 of systems and formats that
// want it. The pair loses nothing: any bytes, valid UTF-8 or not, come back as they were, so a file
// name in some old encoding survives the way through UTF-16. Both texts end with a zero. Any
// thread may call; nothing is allocated.

/// Converts to UTF-16 and returns the number of units without the end. `dst`: null only counts;
/// else at most `dstSize` units are written, a zero behind them if there is room for one, and the
/// answer is what was written. A character of two units that does not fit whole ends the text.
///
/// What is no UTF-8 (stray and missing continuation bytes, overlong forms, values above U+10FFFF)
/// becomes one character of two units for each byte: U+100000 and the byte. Those 256 characters
/// themselves, which belong to no script, count as invalid for that reason. Surrogates, which UTF-8
/// should not hold, pass as single units, but for one that stands right before a low surrogate:
/// the two would come back as one character, so the first counts as invalid.
std::size_t utf8ToUtf16(const char* src, char16_t* dst, std::size_t dstSize);

/// Converts to UTF-8 and returns the number of bytes without the end. `dst` and `dstSize`, in
/// bytes, as above; a character whose bytes don't fit ends the text.
///
/// Any surrogate and a low one behind it are one character; a surrogate without one stands for
/// itself, in three bytes. A low surrogate in the first place gives a value above U+10FFFF, of up
/// to five bytes. U+100000 to U+1000FF are each written as the one byte that they stand for.
std::size_t utf16ToUtf8(const char16_t* src, char* dst, std::size_t dstSize);

}  // namespace Tarnkit
