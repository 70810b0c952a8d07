#pragma once

#include <cmath>
#include <numbers>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

// What lights make of their parameters, and the solid angle that two of them are sampled over.

inline Point toPoint(Color c) {
    return {c.r, c.g, c.b};
}

/// Writes the unit vector along `c`. False if it has no direction or isn't finite.
inline bool toDirection(Color c, Vector& out) {
    const Vector v{c.r, c.g, c.b};
    const float len = length(v);
    if (!(len > 0.0f) || !std::isfinite(len))
        return false;
    out = v * (1.0f / len);
    return true;
}

/// Whether a size is usable: above 0 and finite.
inline bool isPositive(float x) {
    return x > 0.0f && std::isfinite(x);
}

/// Solid angle of a cone, 2 pi (1 - cos), by the squared sine and the cosine of its half angle. For
/// a narrow cone that difference would cancel to nothing, so it is computed as sin^2 / (1 + cos).
inline float coneSolidAngle(float sine2, float cosine) {
    return 2.0f * std::numbers::pi_v<float> * sine2 / (1.0f + cosine);
}

}  // namespace Tarnkit
