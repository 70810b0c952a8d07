#pragma once

#include "pelk/base/vector.h"

namespace Tarnkit {

/// A linear map by the images of the three axes, that is a 3 x 3 matrix by its columns. The
/// identity by default. A plain value: any thread, no allocation, no test of what stands in it.
///
/// As a tangent frame its columns are the tangent, the bitangent and the shading normal in world
/// space, so the product leads from the local space of the microfacet formulas, in which the normal
/// is the z axis and the z component of a unit vector its polar cosine, to the world.
///
/// By columns and not by rows, as shading builds a frame from the axes that it knows, and reads the
/// normal back as the third of them without any arithmetic.
struct Matrix {
    Vector columns[3] = {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}};

    /// Exact, per component.
    constexpr bool operator==(const Matrix&) const = default;
};

/// The image of `v`: v.x times the first column plus v.y times the second plus v.z times the third,
/// added in this order. Keeps lengths and angles only if the columns are orthonormal.
constexpr Vector operator*(const Matrix& m, Vector v) {
    return v.x * m.columns[0] + v.y * m.columns[1] + v.z * m.columns[2];
}

/// The map that applies `b` first and then `a`: its columns are the images under `a` of those of
/// `b`.
constexpr Matrix operator*(const Matrix& a, const Matrix& b) {
    return {{a * b.columns[0], a * b.columns[1], a * b.columns[2]}};
}

/// The matrix with rows and columns exchanged. For orthonormal columns, such as those of a tangent
/// frame, it is the inverse, so it leads from the world back to local space. Of any other matrix it
/// is not the inverse, and nothing here tests that.
constexpr Matrix transposed(const Matrix& m) {
    const Vector* c = m.columns;
    return {{{c[0].x, c[1].x, c[2].x}, {c[0].y, c[1].y, c[2].y}, {c[0].z, c[1].z, c[2].z}}};
}

}  // namespace Tarnkit
