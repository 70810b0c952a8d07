#include "pelk/host/trace/triangle_rim.h"

#include <cmath>

namespace Tarnkit {

namespace {

/// In double precision, in which differences of coordinates are exact or next to it.
struct Wide {
    double x, y, z;
};

Wide difference(const Vector& a, const Vector& b) {
    return {static_cast<double>(a.x) - b.x, static_cast<double>(a.y) - b.y,
            static_cast<double>(a.z) - b.z};
}

/// The sum of the components' sizes: the length or up to 1.8 times as much.
double extent(const Wide& v) {
    return std::fabs(v.x) + std::fabs(v.y) + std::fabs(v.z);
}

/// On which side of the line from p to q the ray along `d` passes, and how far by.
double sideOf(const Wide& p, const Wide& q, const Wide& d) {
    return (p.y * q.z - p.z * q.y) * d.x + (p.z * q.x - p.x * q.z) * d.y +
           (p.x * q.y - p.y * q.x) * d.z;
}

}  // namespace

std::array<Vector, 3> grownTriangle(const Mesh& mesh, u32 triangle) {
    const auto& t = mesh.triangles[triangle];
    const Vector corners[3] = {mesh.positions[t[0]], mesh.positions[t[1]], mesh.positions[t[2]]};
    const auto grown = [&](float Vector::*axis, int corner) {
        // In double: a coordinate that the three share, as on a floor, keeps its bits.
        const double at = corners[corner].*axis;
        const double centre =
            (static_cast<double>(corners[0].*axis) + corners[1].*axis + corners[2].*axis) / 3.0;
        return static_cast<float>(at + kTriangleRim * (at - centre));
    };
    std::array<Vector, 3> out;
    for (int i = 0; i < 3; ++i)
        out[i] = {grown(&Vector::x, i), grown(&Vector::y, i), grown(&Vector::z, i)};
    return out;
}

bool meetsTriangle(const Mesh& mesh, u32 triangle, const Vector& origin, const Vector& direction) {
    constexpr double kRounding = 0x1p-22;
    const Wide d{direction.x, direction.y, direction.z};
    const double coordinates = extent(difference(origin, {}));
    Wide corners[3];
    for (int i = 0; i < 3; ++i)
        corners[i] = difference(mesh.positions[mesh.triangles[triangle][i]], origin);
    bool isLeft = false, isRight = false;
    for (int i = 0; i < 3; ++i) {
        const Wide &p = corners[i], &q = corners[i == 2 ? 0 : i + 1];
        const double edge = extent({q.x - p.x, q.y - p.y, q.z - p.z});
        const double slack = kRounding * (coordinates + extent(p)) * edge * extent(d);
        const double side = sideOf(p, q, d);
        isLeft |= side > slack;
        isRight |= side < -slack;
    }
    return !(isLeft && isRight);
}

}  // namespace Tarnkit
