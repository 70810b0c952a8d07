#pragma once

#include "pelk/contract/context.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

// Texture coordinates of the mesh at a hit. `context` is one of this host. `set`: number of the UV
// set, from 0; a mesh that lacks it gives set 0.

/// Texture coordinates at `context.hitPoint`, which may have been moved along the surface since
/// the hit; 0, 0 where the object has none.
UV surfaceUV(const PelkContext& context, int set = 0);

/// The linear map from world space to (u, v, normal) on the triangle that was hit: the columns of
/// its inverse are dp/du, dp/dv and the shading normal. Without usable coordinates (none,
/// degenerate, or so that the tangents lie in a plane with the shading normal) u and v run along an
/// arbitrary orthonormal tangent frame; the identity for a normal of 0.
Transform surfaceFrame(const PelkContext& context, int set = 0);

}  // namespace Tarnkit
