#pragma once

#include "pelk/contract/pelk_plugin.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// What all cameras have: where they stand, and to where they look.
struct CameraParams {
    Color position, target, up;
};

/// Base of the cameras of this host. A class that derives from it registers and binds the
/// parameters of CameraParams in front of its own.
class HostCamera : public PelkPlugin, public CameraInterface {
public:
    explicit HostCamera(PelkPluginDesc* pluginDesc);

    using Offered = InterfaceList<CameraInterface>;
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

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
