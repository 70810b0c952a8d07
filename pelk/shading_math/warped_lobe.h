#pragma once

#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

// A glossy lobe that goes from a Lambert surface to a mirror by one number, its gloss: directions
// are chosen as a Lambert surface does, by the cosine, and drawn towards the mirror direction. It
// is a way to choose directions, not a BRDF: nobody evaluates it, and a material that uses it
// weights each direction with the value of its own BRDF over the density told here.
//
// In local space, where the normal is the z axis, with L the view and w the cosine-weighted choice:
//
//     H = (w - L) / |w - L|                          the facet that would mirror the view to w
//     z' = 1 - (1 - g) (1 - H.z)                     its polar cosine, squeezed towards 1
//     h = (H.x, H.y) at the sine of z', and z'       the facet that is taken: azimuth as of H
//     r = L - 2 (h . L) h                            the direction
//
// With g = 0 r is w; with g = 1 h is the normal. The map w -> r of the sphere of directions is
// differentiable, so the density follows from the rule of transformation (Pharr, Jakob and
// Humphreys, "Physically Based Rendering", 4th edition, section 2.4.1): that of w, which is
// w.z / pi, over the area to which the map takes a unit of area at w. As u and v cover the
// hemisphere by just that density, it is 2 pi / |dr/du x dr/dv| in the unit of all densities here,
// 2 pi times that per solid angle, and integrates to 2 pi over the directions that can be chosen.
//
// Arguments that both share:
// `g`: gloss, 0 (diffuse) to 1 (mirror).
// `d`: unit direction of the camera ray, to the surface on the side of the normal.
// `frame`: the tangent frame from local space to the world, orthonormal; its third column is the
//   unit shading normal on the viewer's side. `toLocal`: its inverse.
//
// Pure functions in single precision: any thread, at hits too; nothing is allocated.

/// Samples a direction. `u`, `v`: random numbers, 0 to 1, for the squared cosine of w and for its
/// azimuth. `pdf`: its density; kDeltaDensity for a mirror (g = 1), 0 at u = 0, where w lies in the
/// surface.
/// Returns the direction, unit. At g = 0 it is above the surface; at other gloss it can lead into
/// it at grazing views, which the caller tests as for any microfacet lobe.
Vector sampleWarpedLobe(float u, float v, float g, const Vector& d, const Matrix& frame, float& pdf,
                        const Matrix& toLocal);

/// The density with which sampleWarpedLobe chooses `direction`, unit and not `d` itself: recovers
/// w by undoing the map. 0 if there is no w above the surface that leads there: the squeezed facets
/// lean less than those of all directions, so with gloss a part of the hemisphere is out of reach,
/// and a mirror answers 0 for every direction of a light.
float warpedLobePdf(const Vector& direction, float g, const Vector& d, const Matrix& toLocal);

}  // namespace Tarnkit
