#pragma once

#include <string>

#include "render/host_renderer.h"
#include "render/interfaces.h"
#include "render/plugin_life_cycle.h"
#include "render/render_channels.h"
#include "render/render_job.h"

namespace Tarnkit {

/// A scene made ready for rays, for as long as this lives: plug-ins have begun their frame,
/// geometry is built, lights and camera know where they stand.
class RenderSetup {
public:
    RenderSetup(Scene& scene, const RenderOptions& options, int threads, MessageLog* log);

    /// Comes first. Returns false with a text that names what is wrong in the scene.
    bool prepare(std::string& error);

    CameraInterface& getCamera() const { return *scene.camera; }

private:
    /// The scene's camera as materials ask it.
    class MaterialCamera final : public PelkCamera {
    public:
        explicit MaterialCamera(const Scene& scene_) : scene(scene_) {}
        int mapToScreen(PelkContext& context, ScreenPoint& point, float* distance) override;

    private:
        const Scene& scene;
    };

    bool buildObjects(std::string& error);
    bool prepareLights(std::string& error);
    bool prepareCamera(std::string& error);

    Scene& scene;
    const RenderOptions& options;
    MaterialCamera materialCamera;

public:
    RenderChannels channels;
    HostRenderer renderer;

private:
    PluginLifeCycle plugins;  // the last: ends its frame while the renderer is still there
};

}  // namespace Tarnkit
