#pragma once

#include "pelk/contract/context.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

// What the mesh at a hit says of its texture coordinates. `context` is one of this host. `set` is
// the number of the coordinates, from 0; a surface without that set has the first in its place.

/// Texture coordinates at `context.hitPoint`, which may have been moved along the surface since
/// the hit; 0, 0 where the object has none.
UV surfaceUV(const PelkContext& context, int set = 0);

/// The linear map from the world to the space of u, v and the surface's own normal, as it is on
/// the triangle that was hit. Without usable coordinates u and v run along any directions.
Transform surfaceFrame(const PelkContext& context, int set = 0);

}  // namespace Tarnkit
