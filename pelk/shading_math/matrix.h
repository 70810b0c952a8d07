#pragma once

#include "pelk/base/vector.h"

namespace Tarnkit {

/// A linear map by the images of the three axes. As the frame of a surface: tangent, bitangent and
/// normal, so that the product leads from the surface's space to the world's.
struct Matrix {
    Vector columns[3] = {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}};

    constexpr bool operator==(const Matrix&) const = default;
};

constexpr Vector operator*(const Matrix& m, Vector v) {
    return v.x * m.columns[0] + v.y * m.columns[1] + v.z * m.columns[2];
}

/// The inverse of a matrix of orthonormal columns.
constexpr Matrix transposed(const Matrix& m) {
    const Vector* c = m.columns;
    return {{{c[0].x, c[1].x, c[2].x}, {c[0].y, c[1].y, c[2].y}, {c[0].z, c[1].z, c[2].z}}};
}

}  // namespace Tarnkit
