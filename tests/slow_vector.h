#pragma once

#include <cmath>
#include <valarray>

#include "pelk/base/vector.h"

// Vectors in double, slow and plain: the second way to what shading computes in single precision.

namespace Tarnkit {

using Slow = std::valarray<double>;

inline Slow slow(const Vector& v) {
    return {v.x, v.y, v.z};
}
inline Vector rounded(const Slow& v) {
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}
inline Slow cross(const Slow& a, const Slow& b) {
    return a.cshift(1) * b.cshift(2) - a.cshift(2) * b.cshift(1);
}
inline double dot(const Slow& a, const Slow& b) {
    return (a * b).sum();
}
inline double length(const Slow& a) {
    return std::sqrt(dot(a, a));
}
inline Slow normalize(const Slow& a) {
    return a / length(a);
}

}  // namespace Tarnkit
