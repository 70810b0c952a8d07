#include "pelk/host/plugins/uvwgen_environment.h"

#include <cmath>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/direction_map.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("rotation", &UVWGenEnvironmentParams::rotation, 0.0f,
               "Turns the surroundings to the right, in degrees"),
};

}  // namespace

ParamRows<UVWGenEnvironmentParams> UVWGenEnvironmentParams::table() {
    return kParams;
}

Vector UVWGenEnvironment::getUVW(PelkContext& context) {
    const Vector uvw = directionToUVW(context.rayDir);
    const float u = uvw.x - params.rotation * (1.0f / 360.0f);
    return {u - std::floor(u), uvw.y, 0.0f};
}

Transform UVWGenEnvironment::getTangentFrame(PelkContext&, int& valid) {
    valid = 0;
    return {};
}

}  // namespace Tarnkit
