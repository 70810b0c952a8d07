#include "pelk/host/render/number_ranges.h"

namespace Tarnkit {

std::string numberRanges(std::span<const int> numbers, const char* separator) {
    std::string text;
    for (std::size_t first = 0, last; first < numbers.size(); first = last + 1) {
        for (last = first; last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1;)
            ++last;
        text.append(first > 0 ? separator : "").append(std::to_string(numbers[first]));
        if (last > first)
            text.append("-").append(std::to_string(numbers[last]));
    }
    return text;
}

}  // namespace Tarnkit
