#include "pelk/host/plugins/tex_gradient.h"

#include <algorithm>
#include <cmath>

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/two_color_texture.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("color1", &TexGradientParams::color1, Color(0), "Colour at the start, linear"),
    colorParam("color2", &TexGradientParams::color2, Color(1), "Colour at the end, linear"),
    intParam("form", &TexGradientParams::form, TexGradientParams::kAlongU,
             "0 - along u, 1 - along v, 2 - from the middle outwards"),
    pluginParam<UVWGenInterface>("uvwgen", &TexGradientParams::uvwgen,
                                 "Texture coordinates; those of the surface without one"),
};

}  // namespace

ParamRows<TexGradientParams> TexGradientParams::table() {
    return kParams;
}

void TexGradient::frameBegin(PelkRenderer& renderer) {
    HostTexture::frameBegin(renderer);
    uvwgen = findInterface<UVWGenInterface>(params.uvwgen);
}

AColor TexGradient::getTexColor(PelkContext& context) {
    const Vector uvw = textureCoordinates(context, uvwgen);
    float place = params.form == TexGradientParams::kAlongV ? uvw.y : uvw.x;
    if (params.form == TexGradientParams::kRadial)
        place = 2.0f * std::hypot(uvw.x - 0.5f, uvw.y - 0.5f);
    return {blend(params.color1, params.color2, std::clamp(place, 0.0f, 1.0f)), 1.0f};
}

void TexGradient::describe(ShaderSource& source) {
    describeBlend(source, "gradient", params.color1, params.color2);
    source.printf(" %i\n", params.form);
}

}  // namespace Tarnkit
