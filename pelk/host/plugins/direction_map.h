#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/base/vector.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

/// Longitude from 0 to 1, the middle at -Z; latitude from 0 at +Y to 1 at -Y.
inline UV directionToMap(const Vector& d) {
    return {0.5f + std::atan2(d.x, -d.z) * (0.5f / std::numbers::pi_v<float>),
            std::acos(std::clamp(d.y, -1.0f, 1.0f)) * (1.0f / std::numbers::pi_v<float>)};
}

inline Vector mapToDirection(UV map) {
    const float longitude = (map.u - 0.5f) * 2.0f * std::numbers::pi_v<float>,
                latitude = map.v * std::numbers::pi_v<float>;
    const float sine = std::sin(latitude);
    return {sine * std::sin(longitude), std::cos(latitude), -sine * std::cos(longitude)};
}

}  // namespace Tarnkit
