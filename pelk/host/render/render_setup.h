#pragma once

#include <string>

#include "pelk/host/render/plugin_life_cycle.h"
#include "pelk/host/render/render_channels.h"
#include "pelk/host/render/render_job.h"
#include "pelk/host/trace/host_renderer.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// A scene made ready for tracing rays, for as long as this lives: plug-ins have begun their frame,
/// the acceleration structure is built, lights and camera are prepared. Made by each job on its own
/// thread; after `prepare` the render threads only read it. Scene and options must outlive it.
class RenderSetup {
public:
    RenderSetup(Scene& scene, const RenderOptions& options, int threads, MessageLog* log);

    /// Comes first and once. Returns false with a text that names what is wrong in the scene, by
    /// its JSON pointer. May throw what plug-ins throw, an ExceptionMsg for lack of memory among
    /// it.
    bool prepare(std::string& error);

    /// Writes the camera ray through a place on the picture into `context`, in the scene's space.
    /// `x` and `y` count in pixels from the upper left corner; the middle of the first is 0.5, 0.5.
    void makeRay(double x, double y, PelkContext& context) const {
        scene.camera->makeRay(x, y, context);
        context.rayOrigin = context.spawnOrigin = context.rayOrigin + -sceneOrigin.offset;
    }

    /// RenderOptions::noiseSeed
    u32 getNoiseSeed() const { return options.noiseSeed; }

private:
    /// The translation from the scene's space to the one in which the camera is placed.
    class SceneOrigin final : public WorldTransform {
    public:
        explicit SceneOrigin(Color place) : offset{place.r, place.g, place.b} {}
        void transformPoint(Point& out, const Point& point, double) override {
            out = point + offset;
        }

        const Vector offset;
    };

    /// The scene's camera as materials see it, for those that project a hit onto the picture.
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
    bool canTraceFromCamera() const;

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
