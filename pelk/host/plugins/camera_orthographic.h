#pragma once

#include "pelk/host/plugins/host_camera.h"

namespace Tarnkit {

/// Looks along parallel rays, as a plan does. What lies behind the position isn't seen.
class CameraOrthographic final : public HostCamera {
public:
    struct Params {
        float width = 2.0f;  ///< of what the picture shows
    };

    static constexpr const char* kName = "CameraOrthographic";
    static constexpr u32 kID = 0x7E100022;

    explicit CameraOrthographic(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool prepare(int width, int height, std::string& error) override;
    void makeRay(double x, double y, PelkContext& context) const override;
    bool project(const Point& point, ScreenPoint& screen, float* distance) const override;

private:
    Params params;
    double pixel = 1.0;  ///< side of a pixel in the scene
};

}  // namespace Tarnkit
