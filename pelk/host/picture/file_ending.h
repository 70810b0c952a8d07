#pragma once

#include <algorithm>
#include <string_view>

namespace Tarnkit {

/// Whether a file's name ends so, in upper or lower case; `ending` is in lower case, with its dot.
/// The ending of a name decides on the format that is written.
inline bool hasEnding(std::string_view name, std::string_view ending) {
    const auto isSame = [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + 32) : a) == b;
    };
    return name.size() >= ending.size() && std::equal(ending.rbegin(), ending.rend(), name.rbegin(),
                                                      [&](char b, char a) { return isSame(a, b); });
}

}  // namespace Tarnkit
