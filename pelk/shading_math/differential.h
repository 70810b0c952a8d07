#pragma once

#include "pelk/base/vector.h"

namespace Tarnkit {

// Forward-mode automatic differentiation with two partial derivatives: Griewank and Walther,
// "Evaluating Derivatives", 2nd edition, SIAM 2008, chapter 3. Written with these types, a formula
// of shading yields its value and, by the chain rule, how the value changes from this pixel to the
// next one in x and in y: the ray differentials of Igehy, "Tracing Ray Differentials", SIGGRAPH
// 1999, from which textures take the size of their filter. The mirror direction of the ray
// `d`, whose derivatives are left out as of parallel rays, at a normal that bends along the pixel:
//
//     const DiffVector n = normalize(bumped);
//     const DiffVector mirror = DiffVector{d} - 2.0f * (n * dot(n, d));
//
// Finite differences of neighbouring pixels would cost three evaluations and lose half the digits.
//
// All are pure functions in single precision, but for the products that are said to be in double.
// None tests its arguments: the square root of 0 and the length of a zero vector have no
// derivative, and what comes out isn't finite. Any thread, at hits too; nothing is allocated.

/// A number with its partial derivatives. The unit of the derivatives is that of the value, per
/// step of x and y: mostly per pixel, but whoever fills the inputs decides, and all inputs of one
/// formula must agree.
struct DiffFloat {
    float value = 0.0f;
    float dx = 0.0f, dy = 0.0f;  ///< partial derivatives of `value` along x and along y
};

/// A vector with its partial derivatives, for directions, normals and positions relative to a hit.
/// A derivative of a unit vector is perpendicular to it, as its length doesn't change.
struct DiffVector {
    Vector value;
    Vector dx, dy;  ///< partial derivatives of `value` along x and along y
};

constexpr DiffFloat operator+(const DiffFloat& a, const DiffFloat& b) {
    return {a.value + b.value, a.dx + b.dx, a.dy + b.dy};
}
constexpr DiffFloat operator-(const DiffFloat& a, const DiffFloat& b) {
    return {a.value - b.value, a.dx - b.dx, a.dy - b.dy};
}
constexpr DiffFloat operator-(const DiffFloat& a) {
    return {-a.value, -a.dx, -a.dy};
}

// A plain factor or divisor is a constant: it scales the derivatives as it scales the value.

constexpr DiffFloat operator*(const DiffFloat& a, float s) {
    return {a.value * s, a.dx * s, a.dy * s};
}
constexpr DiffFloat operator/(const DiffFloat& a, float s) {
    return {a.value / s, a.dx / s, a.dy / s};
}

/// Product rule: (a b)' = a' b + a b'.
constexpr DiffFloat operator*(const DiffFloat& a, const DiffFloat& b) {
    return {a.value * b.value, a.dx * b.value + a.value * b.dx, a.dy * b.value + a.value * b.dy};
}

/// The square root: s' = a' / (2 s). `a.value` above 0; at 0 the slope is infinite, and a
/// derivative of 0 there becomes NaN.
DiffFloat sqrt(const DiffFloat& a);

constexpr DiffVector operator+(const DiffVector& a, const DiffVector& b) {
    return {a.value + b.value, a.dx + b.dx, a.dy + b.dy};
}
constexpr DiffVector operator-(const DiffVector& a, const DiffVector& b) {
    return {a.value - b.value, a.dx - b.dx, a.dy - b.dy};
}
constexpr DiffVector operator*(float s, const DiffVector& a) {
    return {s * a.value, s * a.dx, s * a.dy};
}

/// A constant vector scaled by a number that changes, such as a fixed axis by a coordinate.
constexpr DiffVector operator*(const DiffFloat& s, const Vector& v) {
    return {v * s.value, v * s.dx, v * s.dy};
}

/// Product rule, as for two numbers.
constexpr DiffVector operator*(const DiffVector& a, const DiffFloat& s) {
    return {a.value * s.value, a.dx * s.value + a.value * s.dx, a.dy * s.value + a.value * s.dy};
}
constexpr DiffVector operator*(const DiffFloat& s, const DiffVector& a) {
    return a * s;
}

/// Quotient rule: (a / s)' = (a' s - a s') / s^2. `s.value` isn't 0, and not so small that its
/// square underflows (1e-19).
DiffVector operator/(const DiffVector& a, const DiffFloat& s);

// The products with a constant vector, mostly an axis or a shading normal that counts as flat.
// Their terms are products in double, rounded once to single: the vectors are often nearly
// perpendicular (dot) or parallel (cross), the terms cancel, and of derivatives, which are small
// beside the value, single precision would leave no digit.

DiffVector cross(const Vector& a, const DiffVector& b);
DiffVector cross(const DiffVector& a, const Vector& b);
DiffFloat dot(const DiffVector& a, const Vector& b);

/// The Euclidean length l, in the unit of the vector: l' = (a' . 2a) / (2 l). `a.value` isn't zero.
DiffFloat length(const DiffVector& a);

/// The vector made unit, by a / l and the quotient rule. `a.value` isn't zero: unlike
/// normalizeGuarded this has no answer for a collapsed vector, for which no derivative exists.
DiffVector normalize(const DiffVector& a);

}  // namespace Tarnkit
