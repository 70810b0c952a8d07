#pragma once

#include <span>
#include <string>
#include <string_view>

namespace Tarnkit {

// Ends of messages about a name that isn't known. Nearness is edit distance: the fewest characters
// to insert, drop, change or swap with a neighbour that turn one name into the other, upper and
// lower case being the same. A name is near if that is at most a third of the letters of `text`, or
// one letter of a short one; anything further off is another word, and offering it would mislead.

/// ", did you mean \"X\"?" where some name is near, else an empty text. Of several that are equally
/// near the first in `names`.
std::string didYouMean(std::string_view text, std::span<const std::string_view> names);

/// The one that was likely meant, if any is near, and all that are known, up to 60 of them, as in
/// ", did you mean \"red\"? Known: blue, green, red"; empty if none is known.
std::string knownNames(std::string_view text, std::span<const std::string_view> names);

}  // namespace Tarnkit
