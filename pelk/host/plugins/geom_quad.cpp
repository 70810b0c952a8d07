#include "pelk/host/plugins/geom_quad.h"

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/mesh_building.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("width", &GeomQuadParams::width, 1.0f, "Side along X"),
    floatParam("height", &GeomQuadParams::height, 1.0f, "Side along Y"),
};

}  // namespace

ParamRows<GeomQuadParams> GeomQuadParams::table() {
    return kParams;
}

bool GeomQuad::makeShape(Mesh& mesh, std::string& error) {
    if (!checkSize("width", params.width, error) || !checkSize("height", params.height, error))
        return false;
    addRectangle(mesh, {}, {params.width * 0.5f, 0, 0}, {0, params.height * 0.5f, 0}, 0);
    return true;
}

}  // namespace Tarnkit
