#include "pelk/contract/shading.h"

#include <cmath>

#include "pelk/base/shared_field.h"
#include "pelk/contract/renderer.h"

namespace Tarnkit {
namespace {

float repaired(float value, bool allowNegative) {
    return std::isfinite(value) && (allowNegative || !(value < 0.0f)) ? value : 0.0f;
}

}  // namespace

void repairResultColor(PelkContext& context, const Plugin& material, bool allowNegative,
                       int& warned) {
    const Color was = context.resultColor;
    const Color is = {repaired(was.r, allowNegative), repaired(was.g, allowNegative),
                      repaired(was.b, allowNegative)};
    if (is == was)
        return;
    context.resultColor = is;
    if (readShared(warned))
        return;
    writeShared(warned, 1);
    if (MessageLog* log = context.renderer->sequenceData.log)
        log->warning("Material \"%s\" produced overbright or invalid color (rgb=%f %f %f).\n",
                     material.getPluginNameOr(""), was.r, was.g, was.b);
}

}  // namespace Tarnkit
