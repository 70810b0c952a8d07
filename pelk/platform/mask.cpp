#include "pelk/platform/file.h"

namespace Tarnkit::platform {

bool matchesMask(std::string_view name, std::string_view pattern) {
    std::size_t n = 0, p = 0;
    // Where to go on if the text after the last star turns out not to fit: the star then takes
    // one byte more. Earlier stars need no second thought, so the time is bounded.
    std::size_t star = std::string_view::npos, starEnd = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starEnd = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++starEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

}  // namespace Tarnkit::platform
