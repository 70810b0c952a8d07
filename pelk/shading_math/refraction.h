#pragma once

#include "pelk/base/vector.h"

namespace Tarnkit {

/// A refracted ray with its ray differential: how its direction changes from this pixel to the next
/// one in x and in y, from which textures seen through glass take the size of their filter.
struct Refraction {
    Vector direction;       ///< unit as far as the inputs were; continues the path
    Vector derivX, derivY;  ///< derivatives of `direction` along the pixel's x and y
    bool total = false;     ///< total internal reflection: `direction` is the mirror direction
};

/// Refracts a ray by Snell's law at a smooth surface between two clear media.
/// `d`: unit direction of the ray, to the surface. `m`: unit normal, of the surface or of the
/// microfacet that was sampled; it may point to either side of the ray. `n`: index of refraction of
/// the medium behind the surface, where `m` doesn't point, relative to the one in front; above 0,
/// 1.5 for glass in air. A ray against `m` enters with eta = 1 / n, a ray along `m` leaves with
/// eta = n, so one call serves both sides of a surface. `dx` and `dy`: derivatives of `d` along the
/// pixel's x and y, zero vectors if none are wanted.
///
/// With the normal N on the ray's side, c = -d . N and s = sqrt(1 - eta^2 (1 - c^2)) the direction
/// is eta d + (eta c - s) N: Heckbert and Hanrahan, "Beam Tracing Polygonal Objects", SIGGRAPH
/// 1984, and Walter et al., "Microfacet Models for Refraction through Rough Surfaces", EGSR 2007,
/// eq. 40. Its derivatives follow Igehy, "Tracing Ray Differentials", SIGGRAPH 1999, section 3.1.3,
/// with the derivative of the normal left out: the surface counts as flat within the pixel, so
/// the curvature of a lens doesn't widen the filter.
///
/// Where the number under the root is at most 1e-6 there is total internal reflection, the small
/// margin keeping the derivatives, which divide by s, finite. The ray and its derivatives are then
/// mirrored at the surface. What share of light goes through (the Fresnel term) isn't told here.
///
/// All in single precision, in the order of the formulas. A pure function: any thread, at hits too.
Refraction refract(const Vector& d, const Vector& m, float n, const Vector& dx, const Vector& dy);

}  // namespace Tarnkit
