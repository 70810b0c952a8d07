#pragma once

#include <climits>
#include <cmath>

namespace Tarnkit {

/// The number cut towards 0 to an int: 2.9 gives 2, -2.9 gives -2. What lies beyond the ints gives
/// the nearest one, and NaN gives 0. For numbers that a scene may choose, such as a material id
/// read from a texture: a plain cast of one that doesn't fit is undefined, differs between
/// processors, and is a fault under the undefined-behaviour sanitizer. Any thread, no failure.
/// To round to the nearest number instead, add 0.5 first; that is right for positive ones.
inline int truncateToInt(float value) {
    // 2^31 is the first float above all ints. INT_MAX itself is no float: written as one it would
    // round up to 2^31, and a test against it let that number through.
    if (std::isnan(value))
        return 0;
    if (value >= 2147483648.0f)
        return INT_MAX;
    return value <= -2147483648.0f ? INT_MIN : static_cast<int>(value);
}

}  // namespace Tarnkit
