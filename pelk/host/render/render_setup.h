#pragma once

#include <string>

#include "pelk/host/render/plugin_life_cycle.h"
#include "pelk/host/render/render_channels.h"
#include "pelk/host/render/render_job.h"
#include "pelk/host/trace/host_renderer.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// A scene made ready for rays, for as long as this lives: plug-ins have begun their frame,
/// geometry is built, lights and camera know where they stand.
class RenderSetup {
public:
    RenderSetup(Scene& scene, const RenderOptions& options, int threads, MessageLog* log);

    /// Comes first. Returns false with a text that names what is wrong in the scene.
    bool prepare(std::string& error);

    /// The camera's ray through a place on the picture, in the scene's space; as
    /// CameraInterface::makeRay.
    void makeRay(double x, double y, PelkContext& context) const {
        scene.camera->makeRay(x, y, context);
        context.rayOrigin = context.spawnOrigin = context.rayOrigin + -sceneOrigin.offset;
    }

private:
    /// From the scene's space to the camera's.
    class SceneOrigin final : public WorldTransform {
    public:
        explicit SceneOrigin(Color place) : offset{place.r, place.g, place.b} {}
        void transformPoint(Point& out, const Point& point, double) override {
            out = point + offset;
        }

        const Vector offset;
    };

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
    SceneOrigin sceneOrigin;

public:
    RenderChannels channels;
    HostRenderer renderer;

private:
    PluginLifeCycle plugins;  // the last: ends its frame while the renderer is still there
};

}  // namespace Tarnkit
