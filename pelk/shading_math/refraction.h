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
/// mirrored at the surface. What share of light goes through is told by fresnelDielectric below.
///
/// All in single precision, in the order of the formulas. A pure function: any thread, at hits too.
Refraction refract(const Vector& d, const Vector& m, float n, const Vector& dx, const Vector& dy);

/// Fresnel reflectance: the share, 0 to 1, of unpolarised light that a smooth surface between two
/// clear media mirrors; the rest is refracted. Which way the light goes doesn't matter, so the
/// value for the traced path is the value for the light that comes along it.
/// `d`, `m`, `n`: as given to refract. `t`: the direction that it answered. Not for total internal
/// reflection, where no refracted direction exists and the share is 1:
///
///     const Refraction ray = refract(d, m, n, dx, dy);
///     const float share = ray.total ? 1.0f : fresnelDielectric(d, m, ray.direction, n);
///
/// With a = -d . m and b = -t . m, both below 0 for a ray that leaves, it is the mean over the two
/// polarisations, parallel and perpendicular to the plane of incidence:
///
///     F = (((p - 1) / (p + 1))^2 + ((q - 1) / (q + 1))^2) / 2,    p = (b / a) n,  q = (a / b) n
///
/// Fresnel's equations as in Pharr, Jakob and Humphreys, "Physically Based Rendering", 4th edition,
/// section 9.3.5, divided by one cosine: taken from the other side p and q change places, hence one
/// form for rays that enter and that leave. At normal incidence, where rounding may leave a cosine
/// above 1, F = ((n - 1) / (n + 1))^2; for an `n` within 1e-6 of 1 there is no surface, and F = 0.
/// For a ray along the surface F = 1.
float fresnelDielectric(const Vector& d, const Vector& m, const Vector& t, float n);

}  // namespace Tarnkit
