#pragma once

#include <climits>
#include <cmath>

namespace Tarnkit {

/// The number cut towards 0 to an int. What lies beyond the ints gives the nearest one, NaN 0.
inline int truncateToInt(float value) {
    // 2^31 is the first float above all ints.
    if (std::isnan(value))
        return 0;
    if (value >= 2147483648.0f)
        return INT_MAX;
    return value <= -2147483648.0f ? INT_MIN : static_cast<int>(value);
}

}  // namespace Tarnkit
