#include "pelk/host/plugins/geom_box.h"

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/mesh_building.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("size", &GeomBoxParams::size, Color(1), "Sides along X, Y and Z"),
};

}  // namespace

ParamRows<GeomBoxParams> GeomBoxParams::table() {
    return kParams;
}

bool GeomBox::makeShape(Mesh& mesh, std::string& error) {
    for (float side : {params.size.r, params.size.g, params.size.b}) {
        if (!checkSize("size", side, error))
            return false;
    }
    const Vector x{params.size.r * 0.5f, 0, 0}, y{0, params.size.g * 0.5f, 0},
        z{0, 0, params.size.b * 0.5f};
    addRectangle(mesh, x, -z, y, 0);
    addRectangle(mesh, -x, z, y, 1);
    addRectangle(mesh, y, x, -z, 2);
    addRectangle(mesh, -y, x, z, 3);
    addRectangle(mesh, z, x, y, 4);
    addRectangle(mesh, -z, -x, y, 5);
    // Edges are sharp, also where normals are asked to be smooth.
    mesh.normals.clear();
    return true;
}

}  // namespace Tarnkit
