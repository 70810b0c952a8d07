#pragma once

#include "pelk/base/vector.h"

namespace Tarnkit {

/// A ray behind a smooth surface, and the derivatives of its direction.
struct Refraction {
    Vector direction, derivX, derivY;
    bool total = false;  ///< nothing goes through: the ray is the mirrored one
};

/// Refracts the unit direction `d` with the derivatives `dx` and `dy` at the unit normal `m`, which
/// points to the side from which the index of refraction `n` is measured: into the surface the
/// direction is bent by 1 / n, out of it by n.
Refraction refract(const Vector& d, const Vector& m, float n, const Vector& dx, const Vector& dy);

}  // namespace Tarnkit
