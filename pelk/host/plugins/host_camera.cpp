#include "pelk/host/plugins/host_camera.h"

#include <cmath>

#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kViewParams{
    colorParam("position", &CameraParams::position, Color(0, 0, 5), "Where the camera stands"),
    colorParam("target", &CameraParams::target, Color(0),
               "What stands in the middle of the picture"),
    colorParam("up", &CameraParams::up, Color(0, 1, 0), "Direction that is up in the picture"),
};

Vector toVector(Color c) {
    return {c.r, c.g, c.b};
}

}  // namespace

HostCamera::HostCamera(PelkPluginDesc* pluginDesc) : PluginOffering(pluginDesc) {
    kViewParams.bind(paramList, view);
}

void HostCamera::addParameters(PelkParameterListDesc& list) {
    kViewParams.addTo(list);
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

}  // namespace Tarnkit
