#include "pelk/host/plugins/tex_gradient.h"

#include <algorithm>
#include <cmath>

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/two_color_texture.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kGradientParams{
    colorParam("color1", &TexGradient::Params::color1, Color(0), "Colour at the start, linear"),
    colorParam("color2", &TexGradient::Params::color2, Color(1), "Colour at the end, linear"),
    intParam("form", &TexGradient::Params::form, TexGradient::kAlongU,
             "0 - along u, 1 - along v, 2 - from the middle outwards"),
    pluginParam<UVWGenInterface>("uvwgen", &TexGradient::Params::uvwgen,
                                 "Texture coordinates; those of the surface without one"),
};

}  // namespace

TexGradient::TexGradient(PelkPluginDesc* pluginDesc) : HostTexture(pluginDesc) {
    kGradientParams.bind(paramList, params);
}

void TexGradient::addParameters(PelkParameterListDesc& list) {
    kGradientParams.addTo(list);
}

void TexGradient::frameBegin(PelkRenderer& renderer) {
    HostTexture::frameBegin(renderer);
    uvwgen = findInterface<UVWGenInterface>(params.uvwgen);
}

AColor TexGradient::getTexColor(PelkContext& context) {
    const Vector uvw = textureCoordinates(context, uvwgen);
    float place = params.form == kAlongV ? uvw.y : uvw.x;
    if (params.form == kRadial)
        place = 2.0f * std::hypot(uvw.x - 0.5f, uvw.y - 0.5f);
    return {blend(params.color1, params.color2, std::clamp(place, 0.0f, 1.0f)), 1.0f};
}

void TexGradient::describe(ShaderSource& source) {
    describeBlend(source, "gradient", params.color1, params.color2);
    source.printf(" %i\n", params.form);
}

}  // namespace Tarnkit
