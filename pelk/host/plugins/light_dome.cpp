#include "pelk/host/plugins/light_dome.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;

constexpr ParamTable kLightParams{
    colorParam("color", &LightParams::color, Color(1), "Colour of the light, linear"),
    floatParam("intensity", &LightParams::intensity, 1.0f, "Brightness; scales the colour"),
    boolParam("visible", &LightParams::visible, true, "Camera rays see the light itself"),
    boolParam("reflection_visible", &LightParams::reflection_visible, true,
              "Reflected and refracted rays see the light itself"),
    boolParam("shadows", &LightParams::shadows, true, "Geometry stands in the light's way"),
    boolParam("affect_specular", &LightParams::affect_specular, true,
              "Surfaces show highlights of the light"),
};

constexpr ParamTable kAreaParams{
    colorParam("position", &LightArea::Params::position, Color(0), "Centre of the rectangle"),
    colorParam("direction", &LightArea::Params::direction, Color(0, -1, 0),
               "Direction to which the light shines"),
    colorParam("up", &LightArea::Params::up, Color(0, 1, 0),
               "Direction along which the height is measured, as far as it lies in the rectangle"),
    floatParam("width", &LightArea::Params::width, 1.0f, "Side across the up direction"),
    floatParam("height", &LightArea::Params::height, 1.0f, "Side along the up direction"),
};

constexpr ParamTable kSphereParams{
    colorParam("position", &LightSphere::Params::position, Color(0), "Centre of the ball"),
    floatParam("radius", &LightSphere::Params::radius, 1.0f, "Radius of the ball"),
};

constexpr ParamTable kSunParams{
    colorParam("direction", &LightSun::Params::direction, Color(0, -1, 0),
               "Direction in which the light travels"),
    floatParam("angle", &LightSun::Params::angle, 0.53f,
               "Diameter of the sun's disc in degrees; 0 gives hard shadows"),
};

constexpr ParamTable kDomeParams{
    textureParam("texture", &LightDome::Params::texture,
                 "What surrounds the scene, read along directions; white without one"),
};

constexpr ParamTable kEnvironmentParams{
    floatParam("rotation", &UVWGenEnvironment::Params::rotation, 0.0f,
               "Turns the surroundings to the right, in degrees"),
};

Point toPoint(Color c) {
    return {c.r, c.g, c.b};
}

/// False if the vector has no direction.
bool toDirection(Color c, Vector& out) {
    const Vector v{c.r, c.g, c.b};
    const float len = length(v);
    if (!(len > 0.0f) || !std::isfinite(len))
        return false;
    out = v * (1.0f / len);
    return true;
}

bool isPositive(float x) {
    return x > 0.0f && std::isfinite(x);
}

}  // namespace

// ---- what all lights have

HostLight::HostLight(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {
    kLightParams.bind(paramList, light);
}

void HostLight::addParameters(PelkParameterListDesc& list) {
    kLightParams.addTo(list);
}

PluginInterface* HostLight::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

bool HostLight::isVisibleTo(u32 rayType, int traceDepth) const {
    if (traceDepth == 0 && (rayType & kRayCamera))
        return light.visible != 0;
    return light.reflection_visible != 0;
}

// ---- area

LightArea::LightArea(PelkPluginDesc* pluginDesc) : HostLight(pluginDesc) {
    kAreaParams.bind(paramList, params);
}

void LightArea::addParameters(PelkParameterListDesc& list) {
    HostLight::addParameters(list);
    kAreaParams.addTo(list);
}

bool LightArea::prepare(const SceneBounds&, std::string& error) {
    Vector up;
    if (!toDirection(params.direction, normal) || !toDirection(params.up, up)) {
        error = "direction and up must not be 0";
        return false;
    }
    if (!isPositive(params.width) || !isPositive(params.height)) {
        error = "width and height must be above 0";
        return false;
    }
    Vector u = cross(up, normal);
    if (length(u) < 1e-4f) {  // the rectangle lies across `up`: any direction in it will do
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
    const float cosine = -dot(way, normal);  // times the distance
    if (!(cosine > 0.0f))
        return false;
    out.direction = way * (1.0f / distance);
    out.distance = distance;
    out.radiance = emission();
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

// ---- sphere

LightSphere::LightSphere(PelkPluginDesc* pluginDesc) : HostLight(pluginDesc) {
    kSphereParams.bind(paramList, params);
}

void LightSphere::addParameters(PelkParameterListDesc& list) {
    HostLight::addParameters(list);
    kSphereParams.addTo(list);
}

bool LightSphere::prepare(const SceneBounds&, std::string& error) {
    if (!isPositive(params.radius)) {
        error = "radius must be above 0";
        return false;
    }
    centre = toPoint(params.position);
    return true;
}

namespace {

/// Solid angle of the cone in which a ball is seen: 2 pi (1 - cos). For small balls the
/// difference would lose all digits, so it is formed from the sine.
float coneSolidAngle(float sine2, float cosine) {
    return 2.0f * kPi * sine2 / (1.0f + cosine);
}

}  // namespace

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

// ---- sun

LightSun::LightSun(PelkPluginDesc* pluginDesc) : HostLight(pluginDesc) {
    kSunParams.bind(paramList, params);
}

void LightSun::addParameters(PelkParameterListDesc& list) {
    HostLight::addParameters(list);
    kSunParams.addTo(list);
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
        // Over the disc, cosine / pi integrates to the squared sine.
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

// ---- dome

namespace {

// Cells of the table by which a dome is sampled. Each spans 0.7 degrees.
constexpr int kColumns = 512, kRows = 256;

/// Longitude from 0 to 1, the middle at -Z; latitude from 0 at +Y to 1 at -Y.
UV directionToMap(const Vector& d) {
    return {0.5f + std::atan2(d.x, -d.z) * (0.5f / kPi),
            std::acos(std::clamp(d.y, -1.0f, 1.0f)) * (1.0f / kPi)};
}

Vector mapToDirection(UV map) {
    const float longitude = (map.u - 0.5f) * 2.0f * kPi, latitude = map.v * kPi;
    const float sine = std::sin(latitude);
    return {sine * std::sin(longitude), std::cos(latitude), -sine * std::cos(longitude)};
}

/// The cell of sums[0 .. count) in which `random` times the last sum lies; `random` becomes the
/// place inside the cell, 0 to 1.
int chooseCell(const float* sums, int count, float& random) {
    const float target = random * sums[count - 1];
    const int cell = std::min<int>(
        static_cast<int>(std::upper_bound(sums, sums + count, target) - sums), count - 1);
    const float below = cell > 0 ? sums[cell - 1] : 0.0f;
    random = std::clamp((target - below) / (sums[cell] - below), 0.0f, 0x1.fffffep-1f);
    return cell;
}

}  // namespace

LightDome::LightDome(PelkPluginDesc* pluginDesc) : HostLight(pluginDesc) {
    kDomeParams.bind(paramList, params);
}

void LightDome::addParameters(PelkParameterListDesc& list) {
    HostLight::addParameters(list);
    kDomeParams.addTo(list);
}

bool LightDome::prepare(const SceneBounds&, std::string&) {
    cellSums.clear();
    rowSums.clear();
    if (params.texture)
        tabulate();
    return true;
}

Color LightDome::radianceAlong(const Vector& direction) const {
    if (!params.texture)
        return emission();
    RenderContext context;
    context.rayDir = context.rayDir2 = direction;
    context.rayMaxT = kRayFar;
    return emission() * params.texture->getTexColor(context).color;
}

void LightDome::tabulate() {
    std::vector<float> brightness(size_t{kColumns} * kRows);
    double total = 0.0;
    for (int row = 0; row < kRows; ++row) {
        for (int column = 0; column < kColumns; ++column) {
            const Color c =
                radianceAlong(mapToDirection({(column + 0.5f) / kColumns, (row + 0.5f) / kRows}));
            const float b = isFinite(c) ? std::fmax(0.0f, mean(c)) : 0.0f;
            brightness[size_t(row) * kColumns + column] = b;
            total += b;
        }
    }
    // A cell that looks black at its middle may still hold light: each keeps a small share.
    const float least = static_cast<float>(total / brightness.size()) * 0.05f + 1e-6f;
    cellSums.resize(brightness.size());
    rowSums.resize(kRows);
    double rows = 0.0;
    for (int row = 0; row < kRows; ++row) {
        const double sine = std::sin((row + 0.5) / kRows * std::numbers::pi);
        double cells = 0.0;
        for (int column = 0; column < kColumns; ++column) {
            const size_t i = size_t(row) * kColumns + column;
            cells += (brightness[i] + least) * sine;
            cellSums[i] = static_cast<float>(cells);
        }
        rows += cells;
        rowSums[row] = static_cast<float>(rows);
    }
}

float LightDome::densityAlong(const Vector& direction) const {
    if (cellSums.empty())
        return 1.0f / (4.0f * kPi);
    const UV map = directionToMap(direction);
    const int column = std::clamp(static_cast<int>(map.u * kColumns), 0, kColumns - 1);
    const int row = std::clamp(static_cast<int>(map.v * kRows), 0, kRows - 1);
    const float* cells = &cellSums[size_t(row) * kColumns];
    const float weight = cells[column] - (column > 0 ? cells[column - 1] : 0.0f);
    const float perMap = weight / rowSums.back() * (kColumns * kRows);
    const float sine = std::sqrt(std::fmax(1e-8f, 1.0f - direction.y * direction.y));
    return perMap / (2.0f * kPi * kPi * sine);
}

bool LightDome::sample(PelkContext&, float random1, float random2, LightSample& out) {
    if (cellSums.empty()) {
        const float y = 1.0f - 2.0f * random1;
        const float sine = std::sqrt(std::fmax(0.0f, 1.0f - y * y));
        const float phi = 2.0f * kPi * random2;
        out.direction = {sine * std::cos(phi), y, sine * std::sin(phi)};
    } else {
        const int row = chooseCell(rowSums.data(), kRows, random1);
        const int column = chooseCell(&cellSums[size_t(row) * kColumns], kColumns, random2);
        out.direction = mapToDirection({(column + random2) / kColumns, (row + random1) / kRows});
    }
    out.distance = kRayFar;
    out.radiance = radianceAlong(out.direction);
    out.density = densityAlong(out.direction);
    return true;
}

bool LightDome::intersect(const Point&, const Vector& direction, double, double maxT,
                          LightHit& out) {
    if (maxT < kRayFar)
        return false;
    out.distance = kRayFar;
    out.radiance = radianceAlong(direction);
    out.density = densityAlong(direction);
    return true;
}

// ---- mapping by direction

UVWGenEnvironment::UVWGenEnvironment(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {
    kEnvironmentParams.bind(paramList, params);
}

void UVWGenEnvironment::addParameters(PelkParameterListDesc& list) {
    kEnvironmentParams.addTo(list);
}

PluginInterface* UVWGenEnvironment::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

Vector UVWGenEnvironment::getUVW(PelkContext& context) {
    const UV map = directionToMap(context.rayDir);
    const float u = map.u - params.rotation * (1.0f / 360.0f);
    // Images have their first row at the top, texture coordinates start at the bottom.
    return {u - std::floor(u), 1.0f - map.v, 0.0f};
}

Transform UVWGenEnvironment::getTangentFrame(PelkContext&, int& valid) {
    valid = 0;
    return {};
}

}  // namespace Tarnkit
