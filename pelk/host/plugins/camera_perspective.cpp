#include "pelk/host/plugins/camera_perspective.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("fov", &CameraPerspectiveParams::fov, 45.0f,
               "Full angle of view across the picture's width, in degrees"),
};

}  // namespace

ParamRows<CameraPerspectiveParams> CameraPerspectiveParams::table() {
    return kParams;
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
    // Side of a (square) pixel on the image plane at distance 1.
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

}  // namespace Tarnkit
