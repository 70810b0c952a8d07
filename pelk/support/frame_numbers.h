#pragma once

#include "pelk/base/char_string.h"

namespace Tarnkit {

// File names of the frames of an animation. A name is a pattern in which a placeholder stands for
// the number of the frame, in one of three spellings that have grown with different tools:
//
//     shot.%04d.exr        that of printf: `%`, `0` for a fill of zeros, a width, a letter
//     shot.<frame04>.exr   the same in a form that shells and people read: <frame>, <frame4>
//     shot.#.exr           a bare mark, the number of digits being told apart from the name
//
// Nothing here looks at a file, and nothing refuses a pattern: what is no placeholder is text. Null
// counts as an empty text. Calls on different texts may overlap.

/// The name of one frame: every placeholder of the first two spellings replaced by the number.
///
/// - Of `%`: an optional `0`, optional digits for the width, and one of d, D, i, I, u, U. With u
///   and U the frame counts as unsigned, so -1 is 4294967295. `%%` stays as it is, both characters.
/// - Of `<frame`: an optional `0`, optional digits, and `>`; the word in small letters. Any other
///   `<` is text together with the one character behind it, so "<%d" stays.
///
/// Without a width, or with a width of 0, the number takes the places that it needs. With one it
/// takes exactly that many, at most 12: filled from the left with zeros or blanks, or cut at its
/// left, so 12345 under "%03d" is "345". A minus sign counts as one place: in front of the zeros,
/// behind the blanks, and on the leftmost place where digits fill them all.
CharString expandFrameNumber(const char* pattern, int frame);

/// Turns the first spelling into the second: "img.%04d.exr" gives "img.<frame04>.exr", and any of
/// the six letters does. A `%` that digits and such a letter don't follow stays, but the search
/// starts anew at each `%`: unlike above, the second one of "%%d" begins a placeholder.
CharString convertFrameFormat(const char* pattern);

/// The third spelling: writes `name` with every `#` replaced by the frame, with zeros in front up
/// to `digits` places; a sign counts as one, and a longer number is not cut. A name without `#`
/// gets the number as insertBeforeExtension puts it. With `digits` below 1 every `#` is left out
/// and no number is put in.
/// `out`: null does nothing. `outSize`: its bytes; what does not fit is cut and the text always
/// ends.
void insertFrameNumber(const char* name, int digits, int frame, char* out, int outSize,
                       bool addDot);

/// Writes `name` with `text` in front of its extension, which begins at the last `.` behind the
/// last separator (`/` or `\`), if any character of `name` stands before it; without an extension
/// `text` comes last. With `addDot` a `.` goes in front of it, unless one is there or there is no
/// extension: "image.exr" and "0005" give "image.0005.exr", and without `addDot` "image0005.exr".
/// `out` and `outSize` as above.
void insertBeforeExtension(const char* name, const char* text, char* out, int outSize, bool addDot);

}  // namespace Tarnkit
