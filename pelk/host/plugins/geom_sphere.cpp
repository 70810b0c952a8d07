#include "pelk/host/plugins/geom_sphere.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/mesh_building.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("radius", &GeomSphereParams::radius, 1.0f, "Radius of the ball"),
    intParam("segments", &GeomSphereParams::segments, 128,
             "Triangles around the ball, 3 to 4096; half as many from pole to pole"),
};

}  // namespace

ParamRows<GeomSphereParams> GeomSphereParams::table() {
    return kParams;
}

bool GeomSphere::makeShape(Mesh& mesh, std::string& error) {
    if (!checkSize("radius", params.radius, error) || !checkSegments(params.segments, error))
        return false;
    const u32 columns = static_cast<u32>(params.segments), rows = (columns + 1) / 2;
    // The column at u = 1 repeats the one at u = 0, and each pole has a vertex per column: texture
    // coordinates must not jump inside a triangle.
    for (u32 row = 0; row <= rows; ++row) {
        const double v = static_cast<double>(row) / rows;
        const double y = row == rows ? 1.0 : -std::cos(std::numbers::pi * v);
        const double ring = row == 0 || row == rows ? 0.0 : std::sin(std::numbers::pi * v);
        for (u32 column = 0; column <= columns; ++column) {
            const double u = static_cast<double>(column) / columns;
            const double angle = 2.0 * std::numbers::pi * (column % columns) / columns;
            const Vector normal{static_cast<float>(ring * std::sin(angle)), static_cast<float>(y),
                                static_cast<float>(ring * std::cos(angle))};
            addVertex(mesh, normal * params.radius, normal,
                      {static_cast<float>(u), static_cast<float>(v)});
        }
    }
    for (u32 row = 0; row < rows; ++row) {
        for (u32 column = 0; column < columns; ++column) {
            const u32 a = row * (columns + 1) + column, b = a + 1;
            const u32 c = b + columns + 1, d = c - 1;
            if (row > 0)
                mesh.triangles.push_back({a, b, c});
            if (row + 1 < rows)
                mesh.triangles.push_back({a, c, d});
        }
    }
    return true;
}

}  // namespace Tarnkit
