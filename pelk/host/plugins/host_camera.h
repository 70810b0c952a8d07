#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// Parameters that all cameras have: the view, as a look-at. World space.
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
    /// Sets position, axes and image centre from the look-at parameters and the picture's size in
    /// pixels. Returns false with a text if they give no frame.
    bool place(int width, int height, std::string& error);

    Point position;
    Vector right, up, back;
    double centreX = 0.0, centreY = 0.0;  ///< of the image, in pixels

private:
    CameraParams view;
};

}  // namespace Tarnkit
