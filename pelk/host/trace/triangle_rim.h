#pragma once

#include <array>

#include "pelk/base/vector.h"
#include "pelk/host/trace/mesh.h"

// No ray passes between triangles that share an edge or a corner. Single precision alone leaves
// gaps there: the test of a ray against each triangle rounds on its own, and so do those against
// the boxes of the hierarchy. So the ray library gets each triangle with a rim around it, which is
// wide against all that rounds, and a hit on the rim or next to it is decided here in double
// precision, by the triangle as it is. Few hits lie there, so this costs next to nothing.

namespace Tarnkit {

/// By how much a triangle is grown about its centre, as a share of its size.
inline constexpr float kTriangleRim = 1.0f / 64.0f;

/// The corners of a triangle of the mesh with its rim, in its plane up to rounding.
std::array<Vector, 3> grownTriangle(const Mesh& mesh, u32 triangle);

/// A barycentric coordinate on the grown triangle as one of the triangle itself: about the centre,
/// where it is a third, it grows in proportion.
constexpr float withoutRim(float barycentric) {
    return barycentric + kTriangleRim * (barycentric - 1.0f / 3.0f);
}

/// Whether a place on the grown triangle is so near its edge that `meetsTriangle` must decide: on
/// the rim, or inside by no more than the rim's width, which is more than the place is uncertain.
constexpr bool isNearRim(float u, float v) {
    constexpr float kWidth = kTriangleRim * 2.0f / 3.0f;
    return u < kWidth || v < kWidth || u + v > 1.0f - kWidth;
}

/// Whether the line of a ray passes through a triangle of the mesh, or beside it by no more than a
/// rounding step of single precision at the ray's distance. Of two triangles that share an edge or
/// a corner, one at least says yes.
bool meetsTriangle(const Mesh& mesh, u32 triangle, const Vector& origin, const Vector& direction);

}  // namespace Tarnkit
