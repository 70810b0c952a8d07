#include "pelk/host/plugins/geom_quad.h"

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/mesh_building.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kQuadParams{
    floatParam("width", &GeomQuad::Params::width, 1.0f, "Side along X"),
    floatParam("height", &GeomQuad::Params::height, 1.0f, "Side along Y"),
};

}  // namespace

GeomQuad::GeomQuad(PelkPluginDesc* pluginDesc) : HostGeometry(pluginDesc) {
    kQuadParams.bind(paramList, params);
}

void GeomQuad::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    kQuadParams.addTo(list);
}

bool GeomQuad::buildShape(Mesh& mesh, std::string& error) {
    if (!checkSize("width", params.width, error) || !checkSize("height", params.height, error))
        return false;
    addRectangle(mesh, {}, {params.width * 0.5f, 0, 0}, {0, params.height * 0.5f, 0}, 0);
    return true;
}

}  // namespace Tarnkit
