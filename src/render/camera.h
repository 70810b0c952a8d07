#pragma once

#include "frame/pelk_plugin.h"
#include "render/interfaces.h"

namespace Tarnkit {

/// Looks from a point, as a pinhole does.
class CameraPerspective final : public PelkPlugin, public CameraInterface {
public:
    struct Params {
        Color position;
        Color target;
        Color up;
        float fov = 45.0f;  ///< full angle across the picture's width, in degrees
    };

    static constexpr const char* kName = "CameraPerspective";
    static constexpr u32 kID = 0x7E100021;
    static constexpr u64 kFaces[] = {EXT_CAMERA};

    explicit CameraPerspective(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    bool prepare(int width, int height, std::string& error) override;
    void makeRay(double x, double y, PelkContext& context) const override;
    bool project(const Point& point, ScreenPoint& screen, float* distance) const override;
    Point getPosition() const override { return position; }
    void getAxes(Vector axes[3]) const override;

private:
    Params params;
    Point position;
    Vector right, up, back;
    double halfWidth = 1.0;               ///< of the picture at distance 1
    double centreX = 0.0, centreY = 0.0;  ///< half the picture, in pixels
};

}  // namespace Tarnkit
