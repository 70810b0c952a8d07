#include "pelk/host/plugins/uvwgen_map.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/host_texture.h"
#include "pelk/host/trace/surface_uv.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("scale", &UVWGenMapParams::scale, Color(1), "Factors of u, v and w"),
    floatParam("rotation", &UVWGenMapParams::rotation, 0.0f, "Degrees from u towards v"),
    colorParam("offset", &UVWGenMapParams::offset, Color(0), "Added to u, v and w at last"),
    intParam("uv_set", &UVWGenMapParams::uvSet, 0,
             "Which texture coordinates of a mesh that has several, from 0"),
};

}  // namespace

ParamRows<UVWGenMapParams> UVWGenMapParams::table() {
    return kParams;
}

void UVWGenMap::frameBegin(PelkRenderer& renderer) {
    PelkPlugin::frameBegin(renderer);
    const double angle = params.rotation * (std::numbers::pi / 180.0);
    sine = static_cast<float>(std::sin(angle));
    cosine = static_cast<float>(std::cos(angle));
}

Vector UVWGenMap::getUVW(PelkContext& context) {
    const Vector uvw = ownCoordinates(context, params.uvSet);
    const float u = uvw.x * params.scale.r, v = uvw.y * params.scale.g;
    return {u * cosine - v * sine + params.offset.r, u * sine + v * cosine + params.offset.g,
            params.offset.b};
}

Transform UVWGenMap::getTangentFrame(PelkContext& context, int& valid) {
    valid = 1;
    Transform frame = surfaceFrame(context, params.uvSet);
    for (Vector* column : {&frame.axisX, &frame.axisY, &frame.axisZ}) {
        const float u = column->x * params.scale.r, v = column->y * params.scale.g;
        column->x = u * cosine - v * sine;
        column->y = u * sine + v * cosine;
    }
    return frame;
}

}  // namespace Tarnkit
