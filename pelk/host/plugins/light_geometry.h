#pragma once

#include <cmath>
#include <numbers>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

inline Point toPoint(Color c) {
    return {c.r, c.g, c.b};
}

/// False if the vector has no direction.
inline bool toDirection(Color c, Vector& out) {
    const Vector v{c.r, c.g, c.b};
    const float len = length(v);
    if (!(len > 0.0f) || !std::isfinite(len))
        return false;
    out = v * (1.0f / len);
    return true;
}

inline bool isPositive(float x) {
    return x > 0.0f && std::isfinite(x);
}

/// Solid angle of the cone in which a ball is seen: 2 pi (1 - cos). For small balls the
/// difference would lose all digits, so it is formed from the sine.
inline float coneSolidAngle(float sine2, float cosine) {
    return 2.0f * std::numbers::pi_v<float> * sine2 / (1.0f + cosine);
}

}  // namespace Tarnkit
