#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// What all cameras have: where they stand, and to where they look.
struct CameraParams {
    Color position, target, up;
};

/// Base of the cameras of this host. A class that derives from it registers and binds the
/// parameters of CameraParams in front of its own.
class HostCamera : public PluginOffering<CameraInterface> {
public:
    explicit HostCamera(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    Point getPosition() const override { return position; }
    void getAxes(Vector axes[3]) const override;

protected:
    /// Finds position and axes, and the middle of a picture of that size.
    bool place(int width, int height, std::string& error);

    Point position;
    Vector right, up, back;
    double centreX = 0.0, centreY = 0.0;  ///< half the picture, in pixels

private:
    CameraParams view;
};

}  // namespace Tarnkit
