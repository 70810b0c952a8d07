#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/base/vector.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

// The longitude-latitude map of environments: u is longitude, 0 to 1 with 0.5 at -Z and growing
// towards +X; v is the angle from +Y, 0 to 1 at -Y. A cell of the map covers a solid angle of
// 2 pi^2 sin(pi v) du dv.

/// The place of a unit direction on the map.
inline UV directionToMap(const Vector& d) {
    return {0.5f + std::atan2(d.x, -d.z) * (0.5f / std::numbers::pi_v<float>),
            std::acos(std::clamp(d.y, -1.0f, 1.0f)) * (1.0f / std::numbers::pi_v<float>)};
}

/// The texture coordinates of a unit direction: images have their first row at the top of the map,
/// texture coordinates start at the bottom.
inline Vector directionToUVW(const Vector& d) {
    const UV map = directionToMap(d);
    return {map.u, 1.0f - map.v, 0.0f};
}

/// The unit direction of a place on the map.
inline Vector mapToDirection(UV map) {
    const float longitude = (map.u - 0.5f) * 2.0f * std::numbers::pi_v<float>,
                latitude = map.v * std::numbers::pi_v<float>;
    const float sine = std::sin(latitude);
    return {sine * std::sin(longitude), std::cos(latitude), -sine * std::cos(longitude)};
}

}  // namespace Tarnkit
