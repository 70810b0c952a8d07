#pragma once

#include <cmath>
#include <numbers>

#include "pelk/base/color.h"
#include "pelk/base/limits.h"
#include "pelk/base/vector.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

// What lights make of their parameters, the solid angle that two of them are sampled over, and the
// inverse-square law of two others.

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

/// Whether a size is usable: above 0, and so that its square is a float.
inline bool isSize(float x) {
    return x > 0.0f && x < static_cast<float>(kRayFar);
}

/// Whether rays go as far as a place.
inline bool isInReach(Color c) {
    const float far = static_cast<float>(kRayFar);
    return std::fabs(c.r) < far && std::fabs(c.g) < far && std::fabs(c.b) < far;
}

/// Solid angle of a cone, 2 pi (1 - cos), by the squared sine and the cosine of its half angle. For
/// a narrow cone that difference would cancel to nothing, so it is computed as sin^2 / (1 + cos).
inline float coneSolidAngle(float sine2, float cosine) {
    return 2.0f * std::numbers::pi_v<float> * sine2 / (1.0f + cosine);
}

/// The one sample of a delta light at `position`, as seen from `from`. `intensity`: radiant
/// intensity / pi, so that the sample's radiance is irradiance / pi. False where the inverse-square
/// law has no finite answer: at the light itself.
inline bool samplePoint(const Point& position, Color intensity, const Point& from,
                        LightSample& out) {
    const double x = position.x - from.x, y = position.y - from.y, z = position.z - from.z;
    const double squared = x * x + y * y + z * z;
    out.distance = std::sqrt(squared);
    out.radiance = intensity * static_cast<float>(1.0 / squared);
    out.density = 0.0f;
    if (!isFinite(out.radiance))
        return false;
    out.direction = {static_cast<float>(x / out.distance), static_cast<float>(y / out.distance),
                     static_cast<float>(z / out.distance)};
    return true;
}

}  // namespace Tarnkit
