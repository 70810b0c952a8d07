#include "pelk/host/plugins/tex_constant.h"

#include "pelk/contract/param_table.h"
#include "pelk/contract/shader_source.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("color", &TexConstantParams::color, Color(1), "The colour, linear"),
    floatParam("alpha", &TexConstantParams::alpha, 1.0f, "How much of what lies below it hides"),
};

}  // namespace

ParamRows<TexConstantParams> TexConstantParams::table() {
    return kParams;
}

AColor TexConstant::getTexColor(PelkContext&) {
    return {params.color * params.alpha, params.alpha};
}

void TexConstant::describe(ShaderSource& source) {
    source.printf("color %f %f %f\n", params.color.r, params.color.g, params.color.b);
}

}  // namespace Tarnkit
