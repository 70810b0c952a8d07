#pragma once

#include "pelk/shading_math/gtr_masking.h"
#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

/// Which form of the GTR distribution of microfacet normals (generalised Trowbridge-Reitz) a lobe
/// uses. The distribution has two parameters, the roughness alpha and the tail gamma:
///
///     D(c) = k / (1 + (alpha^2 - 1) c^2)^gamma
///
/// where c is the cosine between the normals of facet and surface, and k is such that the facets'
/// projections add up to the surface: D(c) c integrates to 1 over the hemisphere. Burley,
/// "Physically-Based Shading at Disney", SIGGRAPH 2012 course notes, section 5.4 and appendix B.2.
/// Where gamma is 2 it is the distribution of Trowbridge and Reitz, "Average Irregularity
/// Representation of a Rough Surface for Ray Reflection", JOSA 1975, known as GGX since Walter et
/// al., "Microfacet Models for Refraction through Rough Surfaces", EGSR 2007, eq. 33. Those are
/// cited as Burley and Walter below.
///
/// The form is chosen apart from the number gamma, as k and the inverse for sampling differ: those
/// of the free tail divide by 0 at a tail of 1, and those of GGX need neither power nor logarithm.
enum GtrType : int {
    kGtrTailOne = 0,   ///< gamma = 1; k = (alpha^2 - 1) / (pi ln alpha^2). A wide, hazy highlight
    kGtrGgx = 1,       ///< gamma = 2, k = alpha^2 / pi; also any number that is no other type
    kGtrFreeTail = 2,  ///< any gamma but 1;
                       ///< k = (gamma - 1) (alpha^2 - 1) / (pi (1 - (alpha^2)^(1 - gamma)))
};

// The reflection lobe of a rough mirror, after Cook and Torrance, "A Reflectance Model for Computer
// Graphics", 1982, in the form of Walter, eq. 20. The Fresnel term is left to the caller:
//
//     f = D G / (4 |n . v| |n . l|),    v to the viewer, l to the light
//
// D is the distribution above; G, the share of facets that both directions see, is the product of
// the masking of each (Smith's separable form; Walter, eq. 23). Light that a second facet would
// catch is lost, so a rough white surface is darker than white.
//
// All are pure functions of their arguments, in single precision: any thread, at hits too; nothing
// is allocated. None tests its arguments; numbers that aren't finite come out as such.
//
// Arguments that all share:
// `d`: unit direction of the camera ray, to the surface, so v = -d.
// `direction`: unit direction to the light, away from the surface.
// `n`: unit shading normal on the viewer's side. `h`: unit normal of a facet, the half vector.
// `alpha`: width of the distribution, above 0. GGX takes up to 1; the other types only what is
//   below, since their k is 0 / 0 at 1. Often the square of the roughness that a user sets.
// `type`: which form of D, see GtrType.
// `gamma`: the tail, 0 to 10: the smaller, the further the highlight's glow reaches out. The
//   masking goes by it whatever the type, so it is 1 and 2 for the types that fix it.
// `maskMode`: 0 has facets mask one another as those of this tail do. Any other value takes the
//   masking of GGX whatever the tail, which is cheaper.
// `frame`, `toWorld`: the tangent frame from local space to the world; its third column is `n`.
// `toLocal`: its inverse.
// `pdf`: receives the probability density by which sampling chooses the direction.
//
// A tangent and bitangent that aren't unit stretch the lobe (anisotropy). The density is then right
// if the frame's determinant is 1; the masking stays that of the lobe without stretching.
//
// Each `pdf` is 2 pi times the density per solid angle, and the value of a lobe has the same
// factor. In this unit the uniform density over the hemisphere is 1, so mixing it in takes no
// constant; the weight of a sample, value / pdf, isn't touched by it; and BRDFSampler::eval gets
// the densities of lights in it, so both enter the power heuristic of MIS as they are. For a
// density per solid angle divide by 2 pi.
//
// kDeltaDensity stands for a density that can't be computed: where D is next to 0, or a ray runs
// along the surface. In the power heuristic it wins against any light, as the delta lobe of a
// mirror does.

/// Samples the direction to the light: chooses a facet by D(c) c and mirrors `d` at it.
/// `u`, `v`: random numbers, at least 0 and below 1, for the facet's polar cosine and its azimuth.
/// The cosine inverts the cumulative distribution of D(c) c, with a2 for alpha^2:
///
///     GGX        c^2 = (1 - u) / (1 + (a2 - 1) u)
///     tail 1     c^2 = (1 - a2^(1 - u)) / (1 - a2)
///     free tail  c^2 = (1 - (a2^(1 - gamma) (1 - u) + u)^(1 / (1 - gamma))) / (1 - a2)
///
/// The first is Walter, eq. 35, by the cosine; all are in Burley, appendix B.2.
/// `pdf`: 2 pi D c / (4 h . l), Walter, eq. 24 times the Jacobian of eq. 14; kDeltaDensity if
/// it can't be computed.
/// `weight`: receives the sample's throughput f |n . l| / density, in which D cancels out:
/// G (v . h) / (|n . v| (n . h)), Walter, eq. 41. 0 if the direction leads into the surface, for it
/// then leads nowhere and the path ends.
/// Returns the direction; `n`, with weight and pdf 0, if the facet's normal lies in the surface.
Vector sampleGTR(float u, float v, float alpha, int type, float gamma, const Vector& d,
                 const Matrix& frame, float& pdf, float& weight, int maskMode);

/// The density with which sampleGTR chooses `direction` in an orthonormal frame, for MIS against
/// directions that lights have chosen: 2 pi D c / (4 h . l). 0 if no facet on the viewer's side
/// mirrors `d` there. `direction` must not be `d` itself, which has no half vector.
float gtrPdf(const Vector& direction, float alpha, int type, float gamma, const Vector& n,
             const Vector& d);

/// Evaluates the lobe for next-event estimation: 2 pi f |n . l|, for a light at `direction`. At
/// least 0; 0 if either direction runs along the surface or behind it. `pdf`: as gtrPdf gives it,
/// stretched frames included, and 0 for a direction along the surface. For a sampler whose white
/// Lambert surface answers 1 at the normal, that is pi f |n . l|, take half.
float evalGTR(const Vector& d, const Vector& direction, float alpha, int type, float gamma,
              const Vector& n, const Matrix& toWorld, const Matrix& toLocal, float& pdf,
              int maskMode);

// The same lobe where directions are chosen from a mixture: with the probability `alpha` uniformly
// over the hemisphere about `n`, else from the lobe. The lobe alone chooses few directions along
// which wide lobes at grazing views are bright, and those few get large weights (fireflies). The
// uniform share bounds the weights, and the wider the lobe the larger it is. The density is
//
//     alpha * 1 + (1 - alpha) * pdf of the lobe
//
// The three belong together: the density of one kind with directions of the other makes the picture
// too bright or too dark.

/// As evalGTR, with the density of the mixture in `pdf`. The value is that of the lobe alone.
float evalGTRMixed(const Vector& d, const Vector& direction, float alpha, int type, float gamma,
                   const Vector& n, const Matrix& toWorld, const Matrix& toLocal, float& pdf,
                   int maskMode);

/// The density with which sampleGTRMixed chooses `direction`, if that is above the surface; at
/// least `alpha`.
float gtrPdfMixed(const Vector& direction, float alpha, int type, float gamma, const Vector& n,
                  const Vector& d);

/// As sampleGTR, from the mixture. `u` both decides which of the two chooses, and is stretched back
/// over 0 to 1 for that choice, so a stratified pair of numbers stays stratified. `weight`: value
/// over the density of the mixture, not of the part that was drawn, so both parts share one
/// estimator.
Vector sampleGTRMixed(float u, float v, float alpha, int type, float gamma, const Vector& d,
                      const Matrix& frame, float& pdf, float& weight, int maskMode,
                      const Matrix& toLocal);

}  // namespace Tarnkit
