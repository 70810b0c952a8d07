#pragma once

#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

/// The lobe of a rough mirror whose facets follow the generalised Trowbridge-Reitz distribution.
/// Burley, "Physically-Based Shading at Disney", SIGGRAPH 2012 course notes, appendix B.
enum GtrType : int {
    kGtrTailOne = 0,   ///< the tail 1, by a closed form
    kGtrGgx = 1,       ///< the tail 2; also any number that is no other type
    kGtrFreeTail = 2,  ///< any tail but 1
};

// In all that follows `d` is the unit direction of the view, towards the surface; `direction` the
// unit direction of the light, away from it; `n` the normal. `alpha` is the roughness, above 0 and,
// but for GGX, below 1; `gamma` the tail: the smaller, the further the highlight reaches out.
// `maskMode` not 0 has facets mask one another as those of GGX do, whatever the tail.
// A `pdf` is 2 pi times the density per solid angle, 1e18 where a density can't be told.
// `frame` and `toWorld` lead from the surface's space to the world's, `toLocal` leads back.

/// The share of facets with the normal `h` that the direction `w` sees: 0 to 1, never NaN.
float gtrMasking(const Vector& w, const Vector& h, const Vector& n, float alpha, float gamma,
                 int maskMode);

/// Chooses the direction of the light by two numbers below 1. `weight` is what light from there
/// counts on average, 0 for a direction that the surface hides.
Vector sampleGTR(float u, float v, float alpha, int type, float gamma, const Vector& d,
                 const Matrix& frame, float& pdf, float& weight, int maskMode);

/// The density with which sampleGTR chooses `direction`.
float gtrPdf(const Vector& direction, float alpha, int type, float gamma, const Vector& n,
             const Vector& d);

/// 2 pi times the lobe's value times the cosine of the light; `pdf` as gtrPdf.
float evalGTR(const Vector& d, const Vector& direction, float alpha, int type, float gamma,
              const Vector& n, const Matrix& toWorld, const Matrix& toLocal, float& pdf,
              int maskMode);

// The same where directions are chosen from a mixture: with the probability `alpha` evenly over the
// hemisphere, else from the lobe. Wide lobes are then sampled well at grazing views too.

float evalGTRMixed(const Vector& d, const Vector& direction, float alpha, int type, float gamma,
                   const Vector& n, const Matrix& toWorld, const Matrix& toLocal, float& pdf,
                   int maskMode);
float gtrPdfMixed(const Vector& direction, float alpha, int type, float gamma, const Vector& n,
                  const Vector& d);
Vector sampleGTRMixed(float u, float v, float alpha, int type, float gamma, const Vector& d,
                      const Matrix& frame, float& pdf, float& weight, int maskMode,
                      const Matrix& toLocal);

}  // namespace Tarnkit
