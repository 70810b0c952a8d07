#pragma once

#include "pelk/base/color.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

/// An object-to-world transform: scaled, rotated about X, then Y, then Z, and translated. Rotation
/// by t about Y maps (x, z) to (x cos t + z sin t, -x sin t + z cos t); the other axes follow in
/// their cyclic order. A right angle is exact.
class Placement {
public:
    /// Vectors as parameters hold them, in colours. `rotate` in degrees. No component of `scale` is
    /// 0, and all numbers are finite.
    Placement(Color scale, Color rotate, Color translate);

    /// Transforms positions, and normals by the inverse transpose, to world space. A mirroring
    /// scale reverses the winding of the triangles, so that fronts stay fronts.
    void apply(Mesh& mesh) const;
    /// Transforms a vector of object space to world space; its length follows the scale.
    Vector direction(Vector v) const;

private:
    double scale[3];
    double rotation[3][3];  // rows
    double offset[3];
};

}  // namespace Tarnkit
