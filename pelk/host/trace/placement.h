#pragma once

#include <array>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"
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
    /// Transforms a surface normal to world space, by the inverse transpose: unit again, or `n` as
    /// it is if its length can't be told.
    Vector normal(Vector n) const;
    /// Transforms a point of object space to world space.
    Point point(const Vector& p) const;
    /// Transforms a point of world space to object space.
    Point toObject(const Point& p) const;
    /// The map from object space to world space by its columns: the images of the axes, then that
    /// of the origin.
    std::array<Vector, 4> columns() const;
    /// Moves the origin of object space to what is `by` in it now; the world stays as it is.
    void moveOrigin(const Vector& by);

private:
    /// A component of the rotated vector (x, y, z).
    double turned(double x, double y, double z, int row) const;

    double scale[3];
    double rotation[3][3];  // rows
    double offset[3];
};

}  // namespace Tarnkit
