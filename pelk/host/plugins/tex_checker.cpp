#include "pelk/host/plugins/tex_checker.h"

#include <cmath>

#include "pelk/contract/param_table.h"
#include "pelk/contract/shader_source.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("color1", &TexCheckerParams::color1, Color(0.8f), "First colour, linear"),
    colorParam("color2", &TexCheckerParams::color2, Color(0.2f), "Second colour, linear"),
    floatParam("squares", &TexCheckerParams::squares, 8.0f,
               "Squares along one unit of the texture coordinates"),
    pluginParam<UVWGenInterface>("uvwgen", &TexCheckerParams::uvwgen,
                                 "Texture coordinates; those of the surface without one"),
};

}  // namespace

ParamRows<TexCheckerParams> TexCheckerParams::table() {
    return kParams;
}

void TexChecker::frameBegin(PelkRenderer& renderer) {
    HostTexture::frameBegin(renderer);
    uvwgen = findInterface<UVWGenInterface>(params.uvwgen);
}

int TexChecker::getTexInt(PelkContext& context) {
    const Vector uvw = textureCoordinates(context, uvwgen);
    const float square = std::floor(uvw.x * params.squares) + std::floor(uvw.y * params.squares);
    return std::fabs(std::fmod(square, 2.0f)) == 1.0f;
}

AColor TexChecker::getTexColor(PelkContext& context) {
    return {getTexInt(context) ? params.color2 : params.color1, 1.0f};
}

void TexChecker::describe(ShaderSource& source) {
    source.printf("checker %f %f %f %f %f %f %f\n", params.color1.r, params.color1.g,
                  params.color1.b, params.color2.r, params.color2.g, params.color2.b,
                  params.squares);
}

}  // namespace Tarnkit
