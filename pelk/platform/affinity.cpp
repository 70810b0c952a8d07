#include "pelk/platform/affinity.h"

#include <charconv>

namespace Tarnkit::platform {

namespace {

/// Takes a number off the front of `text`.
bool takeNumber(std::string_view& text, unsigned& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return false;
    text.remove_prefix(end - text.data());
    return true;
}

void addRange(ProcessorSet& set, unsigned first, unsigned last) {
    for (unsigned i = first; i <= last && i < kProcessorsPerGroup * kMaxProcessorGroups; ++i)
        set.groups[i / kProcessorsPerGroup] |= std::uint64_t{1} << i % kProcessorsPerGroup;
}

}  // namespace

bool parseProcessorList(std::string_view text, ProcessorSet& set) {
    set = {};
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    while (!text.empty()) {
        unsigned first = 0;
        if (!takeNumber(text, first))
            return false;
        unsigned last = first;
        if (text.starts_with('-')) {
            text.remove_prefix(1);
            if (!takeNumber(text, last) || last < first)
                return false;
        }
        addRange(set, first, last);
        if (text.empty())
            break;
        if (!text.starts_with(',') || text.size() == 1)
            return false;
        text.remove_prefix(1);
    }
    return true;
}

}  // namespace Tarnkit::platform
