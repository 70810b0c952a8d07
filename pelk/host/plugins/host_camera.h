#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// Parameters that all cameras have: the view, as a look-at. Points and directions are held as
/// colours (r, g, b for x, y, z), since parameters know no vector type. World space, scene units.
struct CameraParams {
    Color position;  ///< of the eye
    Color target;    ///< the point in the middle of the picture
    Color up;        ///< of any length, not along the view
};

/// Base of the cameras of this host. The constructor binds CameraParams itself: with WithParams
/// here too, `params` would be the name of two fields of one camera. WithParams of the derived
/// class lists them in front of that class's own.
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
