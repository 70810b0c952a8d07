#include "pelk/support/spelling.h"

#include <algorithm>
#include <vector>

namespace Tarnkit {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

/// The number of edits that turn `a` into `b`, whatever the case of letters. Optimal string
/// alignment by dynamic programming over three rows.
std::size_t countEdits(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before(b.size() + 1), above(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        above[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = lower(a[i - 1]) == lower(b[j - 1]) ? 0 : 1;
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(above);
        above.swap(row);
    }
    return above[b.size()];
}

/// The name that `text` was most likely meant to be: the one that the fewest edits turn into it.
/// Empty if all are too far off. The view is into `names`.
std::string_view nearestName(std::string_view text, std::span<const std::string_view> names) {
    constexpr std::size_t kLongestName = 200;  // the edits of two names take the product of these
    std::string_view best;
    if (text.size() > kLongestName)
        return best;
    // More than a third of the letters wrong is another word; one letter of a short one may be.
    std::size_t fewest = std::max<std::size_t>(1, text.size() / 3) + 1;
    for (const std::string_view name : names) {
        if (name.size() > kLongestName)
            continue;
        const std::size_t edits = countEdits(text, name);
        if (edits < fewest) {
            fewest = edits;
            best = name;
        }
    }
    return best;
}

}  // namespace

std::string didYouMean(std::string_view text, std::span<const std::string_view> names) {
    const std::string_view name = nearestName(text, names);
    return name.empty() ? std::string() : ", did you mean \"" + std::string(name) + "\"?";
}

std::string knownNames(std::string_view text, std::span<const std::string_view> names) {
    constexpr std::size_t kMostNames = 60;
    std::string result = didYouMean(text, names);
    if (names.empty())
        return result;
    result += result.empty() ? "; known: " : " Known: ";
    for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i)
        result += (i > 0 ? ", " : "") + std::string(names[i]);
    return names.size() > kMostNames ? result + ", ..." : result;
}

}  // namespace Tarnkit
