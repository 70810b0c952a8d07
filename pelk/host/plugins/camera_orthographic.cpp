#include "pelk/host/plugins/camera_orthographic.h"

#include <cmath>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    floatParam("width", &CameraOrthographicParams::width, 2.0f,
               "How much of the scene the picture's width shows"),
};

}  // namespace

ParamRows<CameraOrthographicParams> CameraOrthographicParams::table() {
    return kParams;
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
