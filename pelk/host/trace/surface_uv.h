#pragma once

#include "pelk/contract/context.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

// Texture coordinates of the mesh at a hit. `context` is one of this host. `set`: number of the UV
// set, from 0; a mesh that lacks it gives set 0.

/// Texture coordinates at `context.hitPoint`, which may have been moved along the surface since
/// the hit; 0, 0 where the object has none.
UV surfaceUV(const PelkContext& context, int set = 0);

/// The linear map from world space to (u, v, normal) on the triangle that was hit: its rows are the
/// gradients of u and v and the shading normal. Without usable coordinates (none, or degenerate) u
/// and v run along an arbitrary orthonormal tangent frame.
Transform surfaceFrame(const PelkContext& context, int set = 0);

}  // namespace Tarnkit
