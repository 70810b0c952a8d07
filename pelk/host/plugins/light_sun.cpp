#include "pelk/host/plugins/light_sun.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/light_geometry.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;

constexpr ParamTable kParams{
    colorParam("direction", &LightSunParams::direction, Color(0, -1, 0),
               "Direction in which the light travels"),
    floatParam("angle", &LightSunParams::angle, 0.53f,
               "Diameter of the sun's disc in degrees; 0 gives hard shadows"),
};

}  // namespace

ParamRows<LightSunParams> LightSunParams::table() {
    return kParams;
}

bool LightSun::prepare(const SceneBounds&, std::string& error) {
    Vector direction;
    if (!toDirection(params.direction, direction)) {
        error = "direction must not be 0";
        return false;
    }
    if (!(params.angle >= 0.0f && params.angle < 180.0f)) {
        error = "angle must be at least 0 and below 180 degrees";
        return false;
    }
    toSun = -direction;
    makeBasis(toSun, tangent, bitangent);
    radiance = emission();
    density = 0.0f;
    if (hasExtent()) {
        const float radius = params.angle * (kPi / 360.0f);
        const float sine2 = std::sin(radius) * std::sin(radius);
        cosRadius = std::cos(radius);
        density = 1.0f / coneSolidAngle(sine2, cosRadius);
        // The integral of cosine / pi over the disc is the squared sine of its radius.
        radiance *= 1.0f / sine2;
    }
    return true;
}

bool LightSun::sample(PelkContext&, float random1, float random2, LightSample& out) {
    const float oneMinusCos = random1 * (1.0f - cosRadius);
    const float sine = std::sqrt(std::fmax(0.0f, oneMinusCos * (2.0f - oneMinusCos)));
    const float phi = 2.0f * kPi * random2;
    out.direction = tangent * (sine * std::cos(phi)) + bitangent * (sine * std::sin(phi)) +
                    toSun * (1.0f - oneMinusCos);
    out.distance = kRayFar;
    out.radiance = radiance;
    out.density = density;
    return true;
}

bool LightSun::intersect(const Point&, const Vector& direction, double, double maxT,
                         LightHit& out) {
    if (maxT < kRayFar || !hasExtent() || dot(direction, toSun) < cosRadius)
        return false;
    out.distance = kRayFar;
    out.radiance = radiance;
    out.density = density;
    return true;
}

}  // namespace Tarnkit
