#pragma once

#include "pelk/host/plugins/host_camera.h"

namespace Tarnkit {

/// Parameters of CameraPerspective, as the host refreshes them at each frameBegin.
struct CameraPerspectiveParams {
    float fov = 45.0f;  ///< full angle across the picture's width, in degrees

    static ParamRows<CameraPerspectiveParams> table();
};

/// A pinhole camera.
class CameraPerspective final : public WithParams<CameraPerspectiveParams, HostCamera> {
public:
    static constexpr const char* kName = "CameraPerspective";
    static constexpr u32 kID = 0x7E100021;

    using WithParams::WithParams;

    bool prepare(int width, int height, std::string& error) override;
    void makeRay(double x, double y, PelkContext& context) const override;
    bool project(const Point& point, ScreenPoint& screen, float* distance) const override;

private:
    double halfWidth = 1.0;  ///< of the image plane at distance 1
};

}  // namespace Tarnkit
