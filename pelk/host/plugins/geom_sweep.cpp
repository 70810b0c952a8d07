#include "pelk/host/plugins/geom_sweep.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/mesh_building.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("width", &GeomSweepParams::width, 10.0f, "Side along X"),
    floatParam("depth", &GeomSweepParams::depth, 10.0f, "From the wall to the front edge"),
    floatParam("height", &GeomSweepParams::height, 5.0f, "From the floor to the upper edge"),
    floatParam("radius", &GeomSweepParams::radius, 2.0f, "Radius of the bend"),
    intParam("segments", &GeomSweepParams::segments, 48, "Strips of the bend, 3 to 4096"),
};

}  // namespace

ParamRows<GeomSweepParams> GeomSweepParams::table() {
    return kParams;
}

bool GeomSweep::makeShape(Mesh& mesh, std::string& error) {
    if (!checkSize("width", params.width, error) || !checkSize("radius", params.radius, error) ||
        !checkSegments(params.segments, error))
        return false;
    if (!(params.depth > params.radius) || !(params.height > params.radius) ||
        !std::isfinite(params.depth + params.height)) {
        error = "\"depth\" and \"height\" must be above \"radius\"";
        return false;
    }
    const float half = params.width * 0.5f, radius = params.radius;
    // One line across the sheet at (y, z), `along` from the front edge.
    const auto addLine = [&](float y, float z, Vector normal, float along) {
        const float v = along / params.width;
        addVertex(mesh, {-half, y, z}, normal, {0, v});
        addVertex(mesh, {half, y, z}, normal, {1, v});
    };
    addLine(0, params.depth, {0, 1, 0}, 0);
    const float flat = params.depth - radius;
    for (int i = 0; i <= params.segments; ++i) {
        const double angle = std::numbers::pi * 0.5 * i / params.segments;
        const float s = static_cast<float>(std::sin(angle));
        const float c = i == params.segments ? 0.0f : static_cast<float>(std::cos(angle));
        addLine(radius - radius * c, radius - radius * s, {0, c, s},
                flat + radius * static_cast<float>(angle));
    }
    const float bend = radius * std::numbers::pi_v<float> * 0.5f;
    addLine(params.height, 0, {0, 0, 1}, flat + bend + params.height - radius);
    const u32 lines = static_cast<u32>(params.segments) + 3;
    for (u32 i = 0; i + 1 < lines; ++i)
        addQuad(mesh, 2 * i, 2 * i + 1, 2 * i + 3, 2 * i + 2);
    return true;
}

}  // namespace Tarnkit
