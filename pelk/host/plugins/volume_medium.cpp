#include "pelk/host/plugins/volume_medium.h"

#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("ior", &VolumeMediumParams::ior, 1.33f, "Index of refraction",
               "minValue=(0.1), maxValue=(100)"),
};

}  // namespace

ParamRows<VolumeMediumParams> VolumeMediumParams::table() {
    return kParams;
}

}  // namespace Tarnkit
