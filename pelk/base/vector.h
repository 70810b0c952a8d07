#pragma once

#include <cmath>

namespace Tarnkit {

/// A direction, a normal or a differential, in single precision.
struct Vector {
    float x = 0.0f, y = 0.0f, z = 0.0f;

    constexpr Vector() = default;
    constexpr Vector(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

    constexpr Vector& operator+=(Vector v) { return *this = {x + v.x, y + v.y, z + v.z}; }
    constexpr Vector& operator-=(Vector v) { return *this = {x - v.x, y - v.y, z - v.z}; }
    constexpr Vector& operator*=(float s) { return *this = {x * s, y * s, z * s}; }
    constexpr Vector operator-() const { return {-x, -y, -z}; }

    constexpr bool operator==(const Vector&) const = default;
};

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

constexpr float dot(Vector a, Vector b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The dot product summed in double and rounded once: the tests of a surface's sides and the
/// cosines of light must not depend on the order of single-precision roundings.
constexpr float dotDouble(Vector a, Vector b) {
    return static_cast<float>(static_cast<double>(a.x) * b.x + static_cast<double>(a.y) * b.y +
                              static_cast<double>(a.z) * b.z);
}

constexpr Vector cross(Vector a, Vector b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline float length(Vector v) {
    return std::sqrt(dot(v, v));
}

inline float largestComponent(Vector v) {
    return std::fmax(std::fmax(std::fabs(v.x), std::fabs(v.y)), std::fabs(v.z));
}

/// Whether a vector of this length has collapsed: its largest component is at least `limit` times
/// its length. One with a component that is no number has not.
inline bool isCollapsed(Vector v, float len, float limit = 1e18f) {
    return largestComponent(v) >= len * limit;
}

/// `v` made unit by multiplying with 1 / length; it stays unchanged if it has collapsed.
inline Vector normalizeGuarded(Vector v, float limit = 1e18f) {
    const float len = length(v);
    return isCollapsed(v, len, limit) ? v : v * (1.0f / len);
}

/// `v` mirrored at the plane through the origin with the unit normal `n`.
constexpr Vector mirrored(Vector v, Vector n) {
    return v - n * dot(n, v * 2.0f);
}

/// A position in double precision.
struct Point {
    double x = 0.0, y = 0.0, z = 0.0;

    constexpr bool operator==(const Point&) const = default;
};

constexpr Point operator+(Point p, Vector v) {
    return {p.x + v.x, p.y + v.y, p.z + v.z};
}

/// The way from `b` to `a`, rounded to single precision.
constexpr Vector operator-(Point a, Point b) {
    return {static_cast<float>(a.x - b.x), static_cast<float>(a.y - b.y),
            static_cast<float>(a.z - b.z)};
}

/// A linear map and an offset, by columns.
struct Transform {
    Vector axisX{1.0f, 0.0f, 0.0f}, axisY{0.0f, 1.0f, 0.0f}, axisZ{0.0f, 0.0f, 1.0f};
    Vector offset;
};

}  // namespace Tarnkit
