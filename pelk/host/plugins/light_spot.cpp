#include "pelk/host/plugins/light_spot.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/light_geometry.h"

namespace Tarnkit {

namespace {

constexpr float kRadians = std::numbers::pi_v<float> / 180.0f;

constexpr ParamTable kParams{
    colorParam("position", &LightSpotParams::position, Color(0), "Where the light is"),
    colorParam("direction", &LightSpotParams::direction, Color(0, -1, 0),
               "Direction in which the light travels, the axis of its cone"),
    floatParam("angle", &LightSpotParams::angle, 40.0f,
               "Opening of the cone in degrees, from edge to edge"),
    floatParam("falloff", &LightSpotParams::falloff, 5.0f,
               "Width of the soft edge in degrees, within the cone; 0 gives a sharp edge"),
};

}  // namespace

ParamRows<LightSpotParams> LightSpotParams::table() {
    return kParams;
}

bool LightSpot::prepare(const SceneBounds&, std::string& error) {
    if (!toDirection(params.direction, axis)) {
        error = "direction must not be 0";
        return false;
    }
    if (!(params.angle > 0.0f && params.angle <= 360.0f)) {
        error = "angle must be above 0 and at most 360 degrees";
        return false;
    }
    if (!(params.falloff >= 0.0f && params.falloff <= 0.5f * params.angle)) {
        error = "falloff must lie between 0 and half of angle";
        return false;
    }
    cosEdge = std::cos(0.5f * params.angle * kRadians);
    cosInner = std::cos((0.5f * params.angle - params.falloff) * kRadians);
    return true;
}

bool LightSpot::sample(PelkContext& context, float, float, LightSample& out) {
    if (!samplePoint(toPoint(params.position), emission(), context.hitPoint, out))
        return false;
    // Rounding may go beyond -1, which is the edge of a cone of 360 degrees.
    const float cosine = std::fmax(-dot(out.direction, axis), -1.0f);
    if (cosine < cosEdge)
        return false;
    if (cosine < cosInner) {
        const float t = (cosine - cosEdge) / (cosInner - cosEdge);
        out.radiance *= t * t * (3.0f - 2.0f * t);
    }
    return true;
}

bool LightSpot::intersect(const Point&, const Vector&, double, double, LightHit&) {
    return false;
}

}  // namespace Tarnkit
