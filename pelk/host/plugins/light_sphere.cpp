#include "pelk/host/plugins/light_sphere.h"

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
    colorParam("position", &LightSphereParams::position, Color(0), "Centre of the ball"),
    floatParam("radius", &LightSphereParams::radius, 1.0f, "Radius of the ball"),
};

}  // namespace

ParamRows<LightSphereParams> LightSphereParams::table() {
    return kParams;
}

bool LightSphere::prepare(const SceneBounds&, std::string& error) {
    if (!isSize(params.radius) || !isInReach(params.position)) {
        error = "radius must be above 0, and both it and position below 1e18";
        return false;
    }
    centre = toPoint(params.position);
    return true;
}

bool LightSphere::sample(PelkContext& context, float random1, float random2, LightSample& out) {
    const Vector way = centre - context.hitPoint;
    const float squared = dot(way, way);
    const float sine2 = params.radius * params.radius / squared;
    if (!(sine2 < 1.0f))
        return false;  // from inside, the ball is dark
    const float cosMax = std::sqrt(1.0f - sine2);
    const float oneMinusCos = random1 * sine2 / (1.0f + cosMax);
    const float cosine = 1.0f - oneMinusCos;
    const float sine = std::sqrt(std::fmax(0.0f, oneMinusCos * (2.0f - oneMinusCos)));
    const float phi = 2.0f * kPi * random2;
    const Vector axis = way * (1.0f / std::sqrt(squared));
    Vector t, b;
    makeBasis(axis, t, b);
    out.direction = t * (sine * std::cos(phi)) + b * (sine * std::sin(phi)) + axis * cosine;
    const float along = std::sqrt(squared) * cosine;
    const float half = params.radius * params.radius - squared * sine * sine;
    out.distance = along - std::sqrt(std::fmax(0.0f, half));
    out.radiance = emission();
    out.density = 1.0f / coneSolidAngle(sine2, cosMax);
    return true;
}

bool LightSphere::intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                            LightHit& out) {
    const Vector way = centre - origin;
    const float squared = dot(way, way);
    const float sine2 = params.radius * params.radius / squared;
    if (!(sine2 < 1.0f))
        return false;
    const float along = dot(way, direction);
    const Vector across = way - direction * along;
    const float half = params.radius * params.radius - dot(across, across);
    if (!(along > 0.0f && half > 0.0f))
        return false;
    const float t = along - std::sqrt(half);
    if (!(t > minT && t < maxT))
        return false;
    out.distance = t;
    out.radiance = emission();
    out.density = 1.0f / coneSolidAngle(sine2, std::sqrt(1.0f - sine2));
    return true;
}

}  // namespace Tarnkit
