#pragma once

#include "pelk/host/plugins/host_camera.h"

namespace Tarnkit {

/// Looks from a point, as a pinhole does.
class CameraPerspective final : public HostCamera {
public:
    struct Params {
        float fov = 45.0f;  ///< full angle across the picture's width, in degrees
    };

    static constexpr const char* kName = "CameraPerspective";
    static constexpr u32 kID = 0x7E100021;

    explicit CameraPerspective(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool prepare(int width, int height, std::string& error) override;
    void makeRay(double x, double y, PelkContext& context) const override;
    bool project(const Point& point, ScreenPoint& screen, float* distance) const override;

private:
    Params params;
    double halfWidth = 1.0;  ///< of the picture at distance 1
};

}  // namespace Tarnkit
