#include "pelk/shading_math/transforms.h"

#include <algorithm>
#include <cmath>

namespace Tarnkit {
namespace {

/// What decomposeMatrix takes for a rounding error, in radians or as a ratio.
constexpr float kRounding = 1e-6f;

/// The third axis of a pair of edges: on both, and in their unit.
Vector thirdAxis(const Vector& a, const Vector& b) {
    const float root = std::sqrt((dot(a, a) + dot(b, b)) * 0.5f);
    const Vector c = cross(a, b);
    return root == 0.0f ? Vector() : Vector(c.x / root, c.y / root, c.z / root);
}

bool isDegenerate(const Vector& a, const Vector& b, const Vector& third) {
    const float aa = dot(a, a), bb = dot(b, b), ab = dot(a, b);
    const float bound = 1e-6f * aa * bb;
    return dot(third, third) <= bound && std::fabs(ab * ab - aa * bb) <= bound;
}

/// The transposed inverse of the matrix with the columns a, b, e, by cofactors. The determinant
/// e . (a x b) has the size of the squared edges, being above 0 where the pair isn't degenerate.
Matrix inverseTransposed(const Vector& a, const Vector& b, const Vector& e) {
    const Vector be = cross(b, e);
    const float inverse = 1.0f / dot(a, be);
    return {{be * inverse, cross(e, a) * inverse, cross(a, b) * inverse}};
}

/// The eye at `side` along the camera's x axis.
void stereoEye(const Transform& t, float side, int mode, float focus, Transform& out) {
    const Vector point = t.offset - t.axisZ * focus, offset = t.offset + t.axisX * side;
    Transform eye = t;
    eye.offset = offset;
    if (mode != 0) {
        const Vector back = -(point - offset);
        const float k = focus / std::sqrt(side * side + focus * focus);
        eye.axisZ = back * (1.0f / length(back));
        eye.axisY = t.axisY * k;
        eye.axisX = mode == 1 ? cross(eye.axisY, eye.axisZ) : t.axisX * k;
    }
    out = eye;
}

float withoutRounding(float angle) {
    return std::fabs(angle) < kRounding ? 0.0f : angle;
}

float snappedScale(float scale) {
    if (std::fabs(scale - 1.0f) < kRounding)
        return 1.0f;
    return std::fabs(scale + 1.0f) < kRounding ? -1.0f : scale;
}

/// The part of a shear that is above rounding, as a multiple of the scale.
float shearRatio(float measured, float scale) {
    return std::fabs(measured) < kRounding ? 0.0f : measured / scale;
}

/// The angles of the rotation whose images of the axes are `u`.
Vector anglesOf(const Vector (&u)[3]) {
    // Rounding may leave a component of a unit vector a little above 1.
    const float y = std::asin(std::clamp(-u[0].z, -1.0f, 1.0f));
    if (std::fabs(std::cos(y)) > kRounding)
        return {std::atan2(u[1].z, u[2].z), y, std::atan2(u[0].y, u[0].x)};
    return {std::atan2(u[1].x, u[1].y), y, 0.0f};
}

Matrix rotationAboutX(float angle) {
    const float c = std::cos(angle), s = std::sin(angle);
    return {{{1.0f, 0.0f, 0.0f}, {0.0f, c, -s}, {0.0f, s, c}}};
}

Matrix rotationAboutY(float angle) {
    const float c = std::cos(angle), s = std::sin(angle);
    return {{{c, 0.0f, s}, {0.0f, 1.0f, 0.0f}, {-s, 0.0f, c}}};
}

Matrix rotationAboutZ(float angle) {
    const float c = std::cos(angle), s = std::sin(angle);
    return {{{c, -s, 0.0f}, {s, c, 0.0f}, {0.0f, 0.0f, 1.0f}}};
}

}  // namespace

PlaneCoordinates solvePlaneCoordinates(const Vector& a, const Vector& b, const Vector& c) {
    const float aa = dot(a, a), bb = dot(b, b), ab = dot(a, b);
    const float determinant = aa * bb - ab * ab;
    if (std::fabs(determinant) < 1e-12f)
        return {};
    const float ac = dot(a, c), bc = dot(b, c);
    return {(bb * ac - ab * bc) / determinant, (aa * bc - ab * ac) / determinant};
}

bool mapTriangle(const Vector& p0, const Vector& p1, const Vector& p2, const Vector& q0,
                 const Vector& q1, const Vector& q2, Matrix& out) {
    return mapEdges(p1 - p0, p2 - p0, q1 - q0, q2 - q0, out);
}

bool mapEdges(const Vector& a, const Vector& b, const Vector& c, const Vector& d, Matrix& out) {
    const Vector e = thirdAxis(a, b), f = thirdAxis(c, d);
    if (isDegenerate(a, b, e) || isDegenerate(c, d, f))
        return false;
    out = Matrix{{c, d, f}} * transposed(inverseTransposed(a, b, e));
    return true;
}

void stereoLeft(const Transform& t, float eye, int mode, float focus, Transform& out) {
    stereoEye(t, -eye, mode, focus, out);
}

void stereoRight(const Transform& t, float eye, int mode, float focus, Transform& out) {
    stereoEye(t, eye, mode, focus, out);
}

void decomposeMatrix(const Matrix& m, Vector& rotation, Vector& scale, Vector& shear) {
    Vector c1 = m.columns[1], c2 = m.columns[2];
    Vector u[3], lengths;
    lengths.x = length(m.columns[0]);
    u[0] = normalizeGuarded(m.columns[0]);
    const float xy = dot(u[0], c1);
    c1 -= xy * u[0];
    lengths.y = length(c1);
    u[1] = normalizeGuarded(c1);
    const float xz = dot(u[0], c2);
    c2 -= xz * u[0];
    const float yz = dot(u[1], c2);
    c2 -= yz * u[1];
    lengths.z = length(c2);
    u[2] = normalizeGuarded(c2);
    shear = {shearRatio(xy, lengths.y), shearRatio(xz, lengths.z), shearRatio(yz, lengths.z)};
    // A mirrored matrix has no rotation, but its negative has: all three scales take the sign.
    if (dot(u[0], cross(u[1], u[2])) < 0.0f) {
        lengths = -lengths;
        for (Vector& axis : u)
            axis = -axis;
    }
    const Vector angles = anglesOf(u);
    rotation = {withoutRounding(angles.x), withoutRounding(angles.y), withoutRounding(angles.z)};
    scale = {snappedScale(lengths.x), snappedScale(lengths.y), snappedScale(lengths.z)};
}

Matrix composeMatrix(const Vector& rotation, const Vector& scale, const Vector& shear) {
    const Matrix scales{{{scale.x, 0.0f, 0.0f}, {0.0f, scale.y, 0.0f}, {0.0f, 0.0f, scale.z}}};
    const Matrix shears{{{1.0f, shear.x, shear.y}, {0.0f, 1.0f, shear.z}, {0.0f, 0.0f, 1.0f}}};
    return transposed(scales * shears * rotationAboutX(rotation.x) * rotationAboutY(rotation.y) *
                      rotationAboutZ(rotation.z));
}

}  // namespace Tarnkit
