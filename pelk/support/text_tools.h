#pragma once

#include "pelk/base/char_string.h"

namespace Tarnkit {

/// Replaces every occurrence of `find` in `text`, from left to right, in one pass: what has been
/// put in is not searched again, so "a" may become "aa". A null or empty `find` changes nothing; a
/// null `replacement` takes the occurrences out. Memory failure leaves `text` as it was.
void replaceAll(CharString& text, const CharString& find, const CharString& replacement);

/// The same in a buffer of `size` bytes: what is behind an occurrence moves, and what would pass
/// the end is cut. `buffer` holds a terminated text and still does afterwards; `find` and
/// `replacement` are not part of it and not null. Nothing is allocated. A size below 1 does
/// nothing.
void replaceInBuffer(char* buffer, int size, const char* find, const char* replacement);

}  // namespace Tarnkit
