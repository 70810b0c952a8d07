#include "pelk/shading_math/differential.h"

#include <cmath>

namespace Tarnkit {
namespace {

/// The cross product by terms in double, each component rounded once.
Vector crossDouble(const Vector& a, const Vector& b) {
    const double ax = a.x, ay = a.y, az = a.z, bx = b.x, by = b.y, bz = b.z;
    return {static_cast<float>(ay * bz - az * by), static_cast<float>(az * bx - ax * bz),
            static_cast<float>(ax * by - ay * bx)};
}

Vector over(const Vector& v, float s) {
    return {v.x / s, v.y / s, v.z / s};
}

}  // namespace

DiffFloat sqrt(const DiffFloat& a) {
    const float s = std::sqrt(a.value);
    return {s, a.dx * 0.5f / s, a.dy * 0.5f / s};
}

DiffVector operator/(const DiffVector& a, const DiffFloat& s) {
    const float square = s.value * s.value;
    return {over(a.value, s.value), over(a.dx * s.value - a.value * s.dx, square),
            over(a.dy * s.value - a.value * s.dy, square)};
}

DiffVector cross(const Vector& a, const DiffVector& b) {
    return {crossDouble(a, b.value), crossDouble(a, b.dx), crossDouble(a, b.dy)};
}

DiffVector cross(const DiffVector& a, const Vector& b) {
    return {crossDouble(a.value, b), crossDouble(a.dx, b), crossDouble(a.dy, b)};
}

DiffFloat dot(const DiffVector& a, const Vector& b) {
    return {dotDouble(a.value, b), dotDouble(a.dx, b), dotDouble(a.dy, b)};
}

DiffFloat length(const DiffVector& a) {
    const float l = length(a.value);
    const Vector twice = a.value * 2.0f;
    return {l, dot(a.dx, twice) * 0.5f / l, dot(a.dy, twice) * 0.5f / l};
}

DiffVector normalize(const DiffVector& a) {
    return a / length(a);
}

}  // namespace Tarnkit
