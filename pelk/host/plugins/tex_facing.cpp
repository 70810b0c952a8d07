#include "pelk/host/plugins/tex_facing.h"

#include <cmath>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/two_color_texture.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("color1", &TexFacingParams::color1, Color(0),
               "Colour where the surface faces the ray, linear"),
    colorParam("color2", &TexFacingParams::color2, Color(1),
               "Colour where it is seen edge-on, linear"),
    floatParam("power", &TexFacingParams::power, 1.0f,
               "The higher, the more keeps the first colour"),
};

}  // namespace

ParamRows<TexFacingParams> TexFacingParams::table() {
    return kParams;
}

AColor TexFacing::getTexColor(PelkContext& context) {
    const float cosine = std::fmin(std::fabs(dot(context.normal, context.rayDir)), 1.0f);
    return {blend(params.color1, params.color2, std::pow(1.0f - cosine, params.power)), 1.0f};
}

void TexFacing::describe(ShaderSource& source) {
    describeBlend(source, "facing", params.color1, params.color2);
    source.printf(" %f\n", params.power);
}

}  // namespace Tarnkit
