#pragma once

#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

// A glossy lobe whose facets lean as those of a Gaussian height field: the squared tangent of the
// angle between the normals of facet and surface is distributed exponentially, with the mean `k`:
//
//     D(z) = exp(-(1 / z^2 - 1) / k) / (pi k z^4),    z: cosine between the two normals
//
// Beckmann and Spizzichino, "The Scattering of Electromagnetic Waves from Rough Surfaces", 1963, in
// the form of Walter et al., "Microfacet Models for Refraction through Rough Surfaces", EGSR 2007,
// eq. 25, with k for alpha_b^2. The highlight ends more sharply than that of the GTR lobes.
//
// The densities are the fit by which Ward, "Measuring and Modeling Anisotropic Reflection",
// SIGGRAPH 1992, eq. 4, normalises this exponential. The exact density of the sampled directions is
// D z / (4 h . l); the fit has the larger of the cosines of viewer and light to the normal, here
// called m, in place of z^3 (h . l). They are equal where the half vector is the normal and drift
// apart with the lobe's width, so this density doesn't integrate to 2 pi, and what is weighted
// by it is a little off for wide lobes. Sample and pdf share it, so MIS weights of the two add up.
//
// Arguments that all share:
// `d`: unit direction of the camera ray, to the surface. `direction`: unit direction to the light,
//   away from the surface, and not `d` itself, which has no half vector.
// `k`: squared roughness, above 0 to 1; the square root of k is the root mean square slope.
// `n`: unit shading normal on the viewer's side.
// `frame`, `toWorld`: the tangent frame from local space to the world, orthonormal; its third
//   column is `n`. `toLocal`: its inverse.
// Densities are 2 pi times the density per solid angle, as of all lobes here; the value has the
// same factor. kDeltaDensity stands for a density that is infinite or can't be computed.
//
// All are pure functions in single precision: any thread, at hits too; nothing is allocated.

/// Samples the direction to the light: a facet by D(z) z, at which `d` is mirrored.
/// `u`, `v`: random numbers, 0 to 1, for the facet's polar cosine, z = 1 / sqrt(1 - k ln(1 - u)),
/// and its azimuth; Walter, eq. 28. A `u` of 1, as some generators give it, counts as 0, for the
/// logarithm is infinite there.
/// `pdf`: (1 - u) / (2 m k), equal to exponentialPdf; kDeltaDensity if m k is below 1e-6.
/// Returns the direction, also if it leads into the surface; exponentialEval is 0 there.
Vector sampleExponential(float u, float v, float k, const Vector& d, const Matrix& frame,
                         float& pdf);

/// The density of `direction`, for MIS against directions that lights have chosen:
/// exp(-(1 / z^2 - 1) / k) / (2 m k). kDeltaDensity if |k| is below 1e-6, which is a mirror; 0 if
/// both directions lie behind the surface or along it, or z^2 is below 1e-6.
float exponentialPdf(const Vector& direction, float k, const Vector& n, const Vector& d,
                     const Matrix& toLocal);

/// Evaluates the lobe for next-event estimation: 2 pi f |n . l|, at least 0, with
///
///     f = s D G / (4 |n . v| |n . l|),    s = (1 - sqrt(k)) + sqrt(k) / 3
///
/// G is the geometry term of V-shaped grooves, min(1, 2 z (n . v) / (v . h), 2 z (n . l) / (v .
/// h)): Cook and Torrance, "A Reflectance Model for Computer Graphics", 1982, eq. 15. The factor s,
/// a fit, darkens wide lobes down to a third. No Fresnel term; the caller's. 0 where a direction
/// runs along the surface or behind it. A `k` of 0 is a mirror, which can't be evaluated: 0.
float exponentialEval(const Vector& direction, float k, const Vector& n, const Vector& d,
                      const Matrix& toLocal, const Matrix& toWorld);

}  // namespace Tarnkit
