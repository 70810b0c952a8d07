#pragma once

#include "pelk/host/plugins/host_camera.h"

namespace Tarnkit {

/// Parameters of CameraOrthographic, as the host refreshes them at each frameBegin.
struct CameraOrthographicParams {
    float width = 2.0f;  ///< of the view, in scene units

    static ParamRows<CameraOrthographicParams> table();
};

/// An orthographic camera: parallel rays that start on the plane through the position.
class CameraOrthographic final : public WithParams<CameraOrthographicParams, HostCamera> {
public:
    static constexpr const char* kName = "CameraOrthographic";
    static constexpr u32 kID = 0x7E100022;

    using WithParams::WithParams;

    bool prepare(int width, int height, std::string& error) override;
    void makeRay(double x, double y, PelkContext& context) const override;
    bool project(const Point& point, ScreenPoint& screen, float* distance) const override;

private:
    double pixel = 1.0;  ///< side of a pixel in the scene
};

}  // namespace Tarnkit
