#pragma once

#include <cmath>

namespace Tarnkit {

// Vectors, points and maps of shading code. All are plain values without hidden state: any thread
// may use them, nothing allocates or fails, and no operation tests its arguments. A number that
// isn't finite passes through to the result, where the material that made it is warned about.
//
// The order of the additions is part of each formula here. The build forbids the compiler to
// reorder or contract them, as pictures must keep their bits from one compiler to the next.

/// A direction, a surface normal or a ray differential, in single precision: three components in
/// the axes of whatever space the owner states, world space where nothing is said. Not a position:
/// see Point. Whether the vector is unit is said by its owner; no operation here keeps it so.
struct Vector {
    float x = 0.0f, y = 0.0f, z = 0.0f;

    constexpr Vector() = default;
    constexpr Vector(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

    // Per component, each result rounded to single precision.
    constexpr Vector& operator+=(Vector v) { return *this = {x + v.x, y + v.y, z + v.z}; }
    constexpr Vector& operator-=(Vector v) { return *this = {x - v.x, y - v.y, z - v.z}; }
    constexpr Vector& operator*=(float s) { return *this = {x * s, y * s, z * s}; }
    constexpr Vector operator-() const { return {-x, -y, -z}; }

    /// Exact: 0 and -0 are equal, a NaN is unequal to itself. Computed directions are hardly ever
    /// equal.
    constexpr bool operator==(const Vector&) const = default;
};

// The operators work per component. There is no product of two vectors by `*`, as a reader could
// take it for `dot` or for `cross`.

constexpr Vector operator+(Vector a, Vector b) {
    return a += b;
}
constexpr Vector operator-(Vector a, Vector b) {
    return a -= b;
}
constexpr Vector operator*(Vector v, float s) {
    return v *= s;
}
constexpr Vector operator*(float s, Vector v) {
    return v *= s;
}

/// The dot product in single precision, summed from x to z. Between unit vectors it is the cosine
/// of their angle, but may round to a little more than 1: clamp it before a square root of
/// 1 - c * c.
constexpr float dot(Vector a, Vector b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The dot product in double, rounded once at the end. For the test on which side of a surface a
/// direction lies, and for the cosine of light at the shading normal: near the silhouette the
/// products are tiny and cancel, and the roundings of single precision alone may turn the sign. A
/// light then leaks through the surface, or a mirror ray starts into it.
constexpr float dotDouble(Vector a, Vector b) {
    return static_cast<float>(static_cast<double>(a.x) * b.x + static_cast<double>(a.y) * b.y +
                              static_cast<double>(a.z) * b.z);
}

/// The cross product, right-handed: cross(x, y) is z. Its length is the area of the parallelogram
/// of both, so it is unit only for perpendicular unit vectors.
constexpr Vector cross(Vector a, Vector b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The Euclidean length, at least 0. The squares overflow: a vector longer than about 1.8e19 has
/// the length infinity, and one shorter than about 3e-23 the length 0.
inline float length(Vector v) {
    return std::sqrt(dot(v, v));
}

/// The largest absolute component, at least 0. Takes no squares, so it still tells a tiny vector
/// from a zero one. A component that is NaN is passed over, as std::fmax does.
inline float largestComponent(Vector v) {
    return std::fmax(std::fmax(std::fabs(v.x), std::fabs(v.y)), std::fabs(v.z));
}

/// How far the largest component and the computed length of a vector may be apart before it counts
/// as collapsed. So large that only a length whose squares have underflowed to 0, or an infinite
/// component, reaches it.
constexpr float kCollapsed = 1e18f;

/// Whether a vector can't be given a direction: its largest component is at least `limit` times
/// `len`, its length as `length` computes it. That is so for the zero vector, for one whose squares
/// underflow, and for one with an infinite component. `limit`: how far the two may be apart; above
/// 1, or every vector along an axis would count. A vector with a NaN and no infinity isn't
/// collapsed: it stays NaN through what follows and is found in the result. Nor is a finite one
/// whose squares overflow; its reciprocal length is 0, so it comes out of normalising as zero.
inline bool isCollapsed(Vector v, float len, float limit = kCollapsed) {
    return largestComponent(v) >= len * limit;
}

/// `v` made unit, unless it has collapsed: that one is returned as it is, so that a zero vector
/// stays zero and no NaN is born of 0 / 0. Multiplies by the reciprocal of the length, not divides
/// by the length: the two round apart, and pictures depend on which. Unit to within a few
/// roundings.
inline Vector normalizeGuarded(Vector v, float limit = kCollapsed) {
    const float len = length(v);
    return isCollapsed(v, len, limit) ? v : v * (1.0f / len);
}

/// The mirror direction: `v` reflected at the plane through the origin with the unit normal `n`,
/// v - 2 (n . v) n. Which way `n` points doesn't matter. `v` points to the surface, the result
/// away from it; its length is that of `v`. Also used on ray differentials of a flat mirror
/// (Igehy, "Tracing Ray Differentials", SIGGRAPH 1999, section 3.1.2, without the terms of a curved
/// surface). The 2 is multiplied into `v`, which is exact, before the dot product is taken.
constexpr Vector mirrored(Vector v, Vector n) {
    return v - n * dot(n, v * 2.0f);
}

/// A position in double precision, in scene units. Positions far from the origin lie closer
/// together than single precision can tell: at a kilometre its steps are 0.06 mm, and rays that
/// start there would hit their own surface. Directions and distances lose nothing by being single.
struct Point {
    double x = 0.0, y = 0.0, z = 0.0;

    constexpr bool operator==(const Point&) const = default;
};

/// The point at the end of `v` if it begins at `p`.
constexpr Point operator+(Point p, Vector v) {
    return {p.x + v.x, p.y + v.y, p.z + v.z};
}

/// The vector from `b` to `a`:
///
///     const Vector toLight = lightPosition - context.hitPoint;
///
/// Subtracts in double and rounds then: rounding the points first would leave nothing of the
/// distance of two that are close together but far from the origin.
constexpr Vector operator-(Point a, Point b) {
    return {static_cast<float>(a.x - b.x), static_cast<float>(a.y - b.y),
            static_cast<float>(a.z - b.z)};
}

/// An affine map: a vector v goes to v.x axisX + v.y axisY + v.z axisZ, and a position gets the
/// offset too. From which space to which is said where one is given. By default the identity. It
/// need be neither a rotation nor invertible; a normal goes through the inverse transpose instead.
/// The tangent frame of a texture mapping is one, where it leads from the world to u, v and the
/// normal; for a map without offset see Matrix of shading_math/.
struct Transform {
    /// The images of the three axes, that is the columns of the matrix.
    Vector axisX{1.0f, 0.0f, 0.0f}, axisY{0.0f, 1.0f, 0.0f}, axisZ{0.0f, 0.0f, 1.0f};
    Vector offset;  ///< the image of the origin; leaves directions alone
};

}  // namespace Tarnkit
