#include "pelk/host/plugins/host_camera.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kViewParams{
    colorParam("position", &CameraParams::position, Color(0, 0, 5), "Where the camera stands"),
    colorParam("target", &CameraParams::target, Color(0),
               "What stands in the middle of the picture"),
    colorParam("up", &CameraParams::up, Color(0, 1, 0), "Direction that is up in the picture"),
};

constexpr ParamTable kPerspectiveParams{
    floatParam("fov", &CameraPerspective::Params::fov, 45.0f,
               "Full angle of view across the picture's width, in degrees"),
};

constexpr ParamTable kOrthographicParams{
    floatParam("width", &CameraOrthographic::Params::width, 2.0f,
               "How much of the scene the picture's width shows"),
};

Vector toVector(Color c) {
    return {c.r, c.g, c.b};
}

}  // namespace

// ---- what all cameras have

HostCamera::HostCamera(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {
    kViewParams.bind(paramList, view);
}

void HostCamera::addParameters(PelkParameterListDesc& list) {
    kViewParams.addTo(list);
}

PluginInterface* HostCamera::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

bool HostCamera::place(int width, int height, std::string& error) {
    const Vector away = toVector(view.position - view.target);
    const Vector across = cross(toVector(view.up), away);
    if (!std::isfinite(length(away)) || !std::isfinite(length(across))) {
        error = "position and target lie too far apart, or up is too long";
        return false;
    }
    if (!(length(away) > 0.0f) || !(length(across) > 1e-6f * length(away))) {
        error = "position and target must differ, and up must not lie along the view";
        return false;
    }
    position = {view.position.r, view.position.g, view.position.b};
    back = away * (1.0f / length(away));
    right = across * (1.0f / length(across));
    up = cross(back, right);
    centreX = width * 0.5;
    centreY = height * 0.5;
    return true;
}

void HostCamera::getAxes(Vector axes[3]) const {
    axes[0] = right;
    axes[1] = up;
    axes[2] = back;
}

// ---- perspective

CameraPerspective::CameraPerspective(PelkPluginDesc* pluginDesc) : HostCamera(pluginDesc) {
    kPerspectiveParams.bind(paramList, params);
}

void CameraPerspective::addParameters(PelkParameterListDesc& list) {
    HostCamera::addParameters(list);
    kPerspectiveParams.addTo(list);
}

bool CameraPerspective::prepare(int width, int height, std::string& error) {
    if (!place(width, height, error))
        return false;
    if (!(params.fov > 0.0f && params.fov < 180.0f)) {
        error = "fov must lie between 0 and 180 degrees";
        return false;
    }
    halfWidth = std::tan(double{params.fov} * std::numbers::pi / 360.0);
    return true;
}

void CameraPerspective::makeRay(double x, double y, PelkContext& context) const {
    // Pixels are square: one is this large at distance 1.
    const double pixel = halfWidth / centreX;
    const Vector way = right * static_cast<float>((x - centreX) * pixel) +
                       up * static_cast<float>((centreY - y) * pixel) - back;
    const float inverse = 1.0f / length(way);
    const Vector direction = way * inverse;
    const auto derivative = [&](Vector step) {
        step *= static_cast<float>(pixel) * inverse;
        return step - direction * dot(direction, step);
    };
    context.rayOrigin = context.spawnOrigin = position;
    context.rayDir = context.rayDir2 = direction;
    context.originDerivX = context.originDerivY = Vector();
    context.rayDerivX = derivative(right);
    context.rayDerivY = derivative(-up);
    context.screenX = x;
    context.screenY = y;
}

bool CameraPerspective::project(const Point& point, ScreenPoint& screen, float* distance) const {
    const Vector way = point - position;
    const float depth = -dot(way, back);
    if (!(depth > 0.0f))
        return false;
    const double pixels = centreX / (halfWidth * depth);
    screen.x = centreX + dot(way, right) * pixels;
    screen.y = centreY - dot(way, up) * pixels;
    if (distance)
        *distance = depth;
    return true;
}

// ---- orthographic

CameraOrthographic::CameraOrthographic(PelkPluginDesc* pluginDesc) : HostCamera(pluginDesc) {
    kOrthographicParams.bind(paramList, params);
}

void CameraOrthographic::addParameters(PelkParameterListDesc& list) {
    HostCamera::addParameters(list);
    kOrthographicParams.addTo(list);
}

bool CameraOrthographic::prepare(int width, int height, std::string& error) {
    if (!place(width, height, error))
        return false;
    if (!(params.width > 0.0f) || !std::isfinite(params.width)) {
        error = "width must be above 0";
        return false;
    }
    pixel = double{params.width} / width;
    return true;
}

void CameraOrthographic::makeRay(double x, double y, PelkContext& context) const {
    const float side = static_cast<float>(pixel);
    context.rayOrigin = context.spawnOrigin =
        position + (right * static_cast<float>((x - centreX) * pixel) +
                    up * static_cast<float>((centreY - y) * pixel));
    context.rayDir = context.rayDir2 = -back;
    context.originDerivX = right * side;
    context.originDerivY = -up * side;
    context.rayDerivX = context.rayDerivY = Vector();
    context.screenX = x;
    context.screenY = y;
}

bool CameraOrthographic::project(const Point& point, ScreenPoint& screen, float* distance) const {
    const Vector way = point - position;
    const float depth = -dot(way, back);
    if (!(depth > 0.0f))
        return false;
    screen.x = centreX + dot(way, right) / pixel;
    screen.y = centreY - dot(way, up) / pixel;
    if (distance)
        *distance = depth;
    return true;
}

}  // namespace Tarnkit
