#pragma once

#include "pelk/base/vector.h"

namespace Tarnkit {

/// Smith's masking G1: the share of the facets with the normal `h` that the direction `w` sees, 0
/// to 1, never NaN. `w`: unit, away from the surface, to the viewer or to the light; for
/// transmission the direction of the refracted ray turned back. 0 below or along the surface (n . w
/// at most 0.001) and on facets seen from behind, 1 along the normal (from a cosine of 0.999999).
/// `n`: unit shading normal. `alpha`, `gamma`, `maskMode`: width and tail of the distribution D of
/// the facets, and whether GGX stands for it, as of the lobes in gtr_lobe.h.
///
/// It follows from D by the equation that the projections of the visible facets add up to that of
/// the surface, as each ray meets one facet:
///
///     n . w = G1 * integral over h of max(0, w . h) D(n . h)
///
/// Heitz, "Understanding the Masking-Shadowing Function in Microfacet-Based BRDFs", JCGT 2014, eq.
/// 43. By the slopes (x, y) of the facets instead of their normals, and with a = cot(angle of w to
/// n), it reads
///
///     1 / G1 = 1 + 1 / a * integral of (x - a) P(x) dx from a to infinity
///     P(x) = integral over y of k (1 + x^2 + y^2)^(gamma - 2) / (alpha^2 + x^2 + y^2)^gamma
///
/// For gamma = 2 that is GGX, G1 = 2 / (1 + sqrt(1 + (alpha / a)^2)): Walter et al., "Microfacet
/// Models for Refraction through Rough Surfaces", EGSR 2007, eq. 34. For gamma = 0, 1, 3 and 4 the
/// fraction splits into powers of 1 + x^2 + y^2 and of alpha^2 + x^2 + y^2, of which both integrals
/// are elementary: roots for 0, 3 and 4, and a logarithm besides for 1.
///
/// A tail within 0.01 of one with a closed form takes that form; tails above 3.99 take that of 4;
/// the others a natural cubic spline in gamma through the five, at the cost of them all. Masking
/// that doesn't fit D would make or lose light.
float gtrMasking(const Vector& w, const Vector& h, const Vector& n, float alpha, float gamma,
                 int maskMode);

}  // namespace Tarnkit
