#pragma once

#include <span>
#include <string>

namespace Tarnkit {

/// Numbers in rising order as text: "0-3,8" for 0, 1, 2, 3, 8 and the separator ",".
std::string numberRanges(std::span<const int> numbers, const char* separator);

}  // namespace Tarnkit
