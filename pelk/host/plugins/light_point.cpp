#include "pelk/host/plugins/light_point.h"

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/light_geometry.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("position", &LightPointParams::position, Color(0), "Where the light is"),
};

}  // namespace

ParamRows<LightPointParams> LightPointParams::table() {
    return kParams;
}

bool LightPoint::prepare(const SceneBounds&, std::string&) {
    return true;
}

bool LightPoint::sample(PelkContext& context, float, float, LightSample& out) {
    return samplePoint(toPoint(params.position), emission(), context.hitPoint, out);
}

bool LightPoint::intersect(const Point&, const Vector&, double, double, LightHit&) {
    return false;
}

}  // namespace Tarnkit
