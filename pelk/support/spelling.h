#pragma once

#include <span>
#include <string>
#include <string_view>

namespace Tarnkit {

/// ", did you mean \"X\"?" where some name is near, else an empty text.
std::string didYouMean(std::string_view text, std::span<const std::string_view> names);

/// For a message about a name that isn't known: the one that was likely meant, if any is near,
/// and all that are known, as in ", did you mean \"red\"? Known: blue, green, red".
std::string knownNames(std::string_view text, std::span<const std::string_view> names);

}  // namespace Tarnkit
