#include "pelk/host/plugins/light_area.h"

#include <cmath>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/light_geometry.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("position", &LightAreaParams::position, Color(0), "Centre of the rectangle"),
    colorParam("direction", &LightAreaParams::direction, Color(0, -1, 0),
               "Direction to which the light shines"),
    colorParam("up", &LightAreaParams::up, Color(0, 1, 0),
               "Direction along which the height is measured, as far as it lies in the rectangle"),
    floatParam("width", &LightAreaParams::width, 1.0f, "Side across the up direction"),
    floatParam("height", &LightAreaParams::height, 1.0f, "Side along the up direction"),
};

}  // namespace

ParamRows<LightAreaParams> LightAreaParams::table() {
    return kParams;
}

bool LightArea::prepare(const SceneBounds&, std::string& error) {
    Vector up;
    if (!toDirection(params.direction, normal) || !toDirection(params.up, up)) {
        error = "direction and up must not be 0";
        return false;
    }
    if (!isSize(params.width) || !isSize(params.height) || !isInReach(params.position)) {
        error = "width and height must be above 0, and both they and position below 1e18";
        return false;
    }
    Vector u = cross(up, normal);
    if (length(u) < 1e-4f) {  // `up` is the normal: any edge direction will do
        Vector unused;
        makeBasis(normal, u, unused);
    }
    u *= 1.0f / length(u);
    edgeU = u * params.width;
    edgeV = cross(normal, u) * params.height;
    inverseU = edgeU * (1.0f / dot(edgeU, edgeU));
    inverseV = edgeV * (1.0f / dot(edgeV, edgeV));
    centre = toPoint(params.position);
    area = params.width * params.height;
    return true;
}

bool LightArea::sample(PelkContext& context, float random1, float random2, LightSample& out) {
    const Vector way =
        (centre - context.hitPoint) + edgeU * (random1 - 0.5f) + edgeV * (random2 - 0.5f);
    const float squared = dot(way, way);
    const float distance = std::sqrt(squared);
    const float cosine = -dot(way, normal);  // to the light's normal, times the distance
    if (!(cosine > 0.0f))
        return false;
    out.direction = way * (1.0f / distance);
    out.distance = distance;
    out.radiance = emission();
    // 1 / area per area, as a density per solid angle: times distance^2 over the cosine.
    out.density = squared * distance / (cosine * area);
    return true;
}

bool LightArea::intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                          LightHit& out) {
    const float cosine = -dot(direction, normal);
    if (!(cosine > 0.0f))
        return false;
    const Vector toCentre = centre - origin;
    const float t = -dot(toCentre, normal) / cosine;
    if (!(t > minT && t < maxT))
        return false;
    const Vector place = direction * t - toCentre;
    if (std::fabs(dot(place, inverseU)) > 0.5f || std::fabs(dot(place, inverseV)) > 0.5f)
        return false;
    out.distance = t;
    out.radiance = emission();
    out.density = t * t / (cosine * area);
    return true;
}

}  // namespace Tarnkit
