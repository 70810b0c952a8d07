#include "pelk/host/trace/placement.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace Tarnkit {

namespace {

/// Sine and cosine of an angle in degrees, exact at multiples of 90: walls that should meet do.
void sinCosDegrees(double degrees, double& s, double& c) {
    int quarters = 0;
    const double rest = std::remquo(degrees, 90.0, &quarters) * (std::numbers::pi / 180.0);
    s = std::sin(rest);
    c = std::cos(rest);
    for (int i = 0; i < (quarters & 3); ++i) {
        const double oldSine = s;
        s = c;
        c = -oldSine;
    }
}

/// Turns the coordinates (a, b) of `v` so that the axis of `a` goes towards that of `b`.
void turn(double (&v)[3], int a, int b, double s, double c) {
    const double va = v[a];
    v[a] = va * c - v[b] * s;
    v[b] = va * s + v[b] * c;
}

float roundToFloat(double x) {
    return static_cast<float>(x);
}

}  // namespace

Placement::Placement(Color scaleBy, Color rotate, Color translate)
    : scale{scaleBy.r, scaleBy.g, scaleBy.b}, offset{translate.r, translate.g, translate.b} {
    const double degrees[3] = {rotate.r, rotate.g, rotate.b};
    for (int column = 0; column < 3; ++column) {
        double v[3] = {};
        v[column] = 1.0;
        for (int axis = 0; axis < 3; ++axis) {
            double s, c;
            sinCosDegrees(degrees[axis], s, c);
            turn(v, (axis + 1) % 3, (axis + 2) % 3, s, c);
        }
        for (int row = 0; row < 3; ++row)
            rotation[row][column] = v[row];
    }
}

Vector Placement::direction(Vector v) const {
    const auto row = [&](int i) {
        return roundToFloat(rotation[i][0] * (v.x * scale[0]) + rotation[i][1] * (v.y * scale[1]) +
                            rotation[i][2] * (v.z * scale[2]));
    };
    return {row(0), row(1), row(2)};
}

double Placement::turned(double x, double y, double z, int row) const {
    return rotation[row][0] * x + rotation[row][1] * y + rotation[row][2] * z;
}

Point Placement::point(const Vector& p) const {
    const double x = p.x * scale[0], y = p.y * scale[1], z = p.z * scale[2];
    return {turned(x, y, z, 0) + offset[0], turned(x, y, z, 1) + offset[1],
            turned(x, y, z, 2) + offset[2]};
}

Vector Placement::normal(Vector n) const {
    // Inverse transpose: rotations stay, scales are inverted.
    const double x = n.x / scale[0], y = n.y / scale[1], z = n.z / scale[2];
    const double len = std::sqrt(x * x + y * y + z * z);
    if (!(len > 0.0))
        return n;
    return {roundToFloat(turned(x, y, z, 0) / len), roundToFloat(turned(x, y, z, 1) / len),
            roundToFloat(turned(x, y, z, 2) / len)};
}

Point Placement::toObject(const Point& p) const {
    const double d[3] = {p.x - offset[0], p.y - offset[1], p.z - offset[2]};
    // The inverse of a rotation is its transpose.
    const auto back = [&](int i) {
        return (rotation[0][i] * d[0] + rotation[1][i] * d[1] + rotation[2][i] * d[2]) / scale[i];
    };
    return {back(0), back(1), back(2)};
}

std::array<Vector, 4> Placement::columns() const {
    return {direction({1, 0, 0}),
            direction({0, 1, 0}),
            direction({0, 0, 1}),
            {roundToFloat(offset[0]), roundToFloat(offset[1]), roundToFloat(offset[2])}};
}

void Placement::moveOrigin(const Vector& by) {
    const Point origin = point(by);
    offset[0] = origin.x;
    offset[1] = origin.y;
    offset[2] = origin.z;
}

void Placement::apply(Mesh& mesh) const {
    for (Vector& p : mesh.positions) {
        const Point world = point(p);
        p = {roundToFloat(world.x), roundToFloat(world.y), roundToFloat(world.z)};
    }
    for (Vector& n : mesh.normals)
        n = normal(n);
    if (scale[0] * scale[1] * scale[2] < 0.0) {
        for (auto& triangle : mesh.triangles)
            std::swap(triangle[1], triangle[2]);
    }
}

}  // namespace Tarnkit
