#include "render/camera.h"

#include <cmath>
#include <numbers>

#include "frame/context.h"
#include "frame/param_table.h"

namespace Tarnkit {

namespace {

using Params = CameraPerspective::Params;

constexpr ParamTable kParams{
    colorParam("position", &Params::position, Color(0, 0, 5), "Where the camera stands"),
    colorParam("target", &Params::target, Color(0), "What stands in the middle of the picture"),
    colorParam("up", &Params::up, Color(0, 1, 0), "Direction that is up in the picture"),
    floatParam("fov", &Params::fov, 45.0f,
               "Full angle of view across the picture's width, in degrees"),
};

Vector toVector(Color c) {
    return {c.r, c.g, c.b};
}

}  // namespace

CameraPerspective::CameraPerspective(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {
    kParams.bind(paramList, params);
}

void CameraPerspective::addParameters(PelkParameterListDesc& list) {
    kParams.addTo(list);
}

PluginInterface* CameraPerspective::getInterface(u64 id) {
    if (id == EXT_CAMERA)
        return static_cast<CameraInterface*>(this);
    return PelkPlugin::getInterface(id);
}

bool CameraPerspective::prepare(int width, int height, std::string& error) {
    const Vector away = toVector(params.position - params.target);
    const Vector across = cross(toVector(params.up), away);
    if (!(length(away) > 0.0f) || !(length(across) > 1e-6f * length(away))) {
        error = "position and target must differ, and up must not lie along the view";
        return false;
    }
    if (!(params.fov > 0.0f && params.fov < 180.0f)) {
        error = "fov must lie between 0 and 180 degrees";
        return false;
    }
    position = {params.position.r, params.position.g, params.position.b};
    back = away * (1.0f / length(away));
    right = across * (1.0f / length(across));
    up = cross(back, right);
    halfWidth = std::tan(double{params.fov} * std::numbers::pi / 360.0);
    centreX = width * 0.5;
    centreY = height * 0.5;
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

void CameraPerspective::getAxes(Vector axes[3]) const {
    axes[0] = right;
    axes[1] = up;
    axes[2] = back;
}

}  // namespace Tarnkit
