#pragma once

#include <algorithm>
#include <vector>

#include "pelk/contract/pelk_plugin.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// Calls renderBegin and frameBegin on every plug-in, and at the end frameEnd and renderEnd on
/// those that got so far, whatever happened in between.
class PluginLifeCycle {
public:
    PluginLifeCycle(Scene& scene, PelkRenderer& renderer_)
        : plugins(scene.collect<PelkPluginInterface>()), renderer(renderer_) {
        // What the others find in the frame comes from the camera, so its frame begins first.
        PluginBase* const camera = scene.camera ? scene.camera->getPlugin() : nullptr;
        const auto others =
            std::stable_partition(plugins.begin(), plugins.end(),
                                  [camera](auto* plugin) { return plugin->getPlugin() == camera; });
        numCameras = static_cast<size_t>(others - plugins.begin());
    }

    ~PluginLifeCycle() {
        while (framesBegun > 0)
            plugins[--framesBegun]->frameEnd(renderer);
        while (rendersBegun > 0)
            plugins[--rendersBegun]->renderEnd(renderer);
    }

    void beginRender() {
        for (PelkPluginInterface* plugin : plugins) {
            plugin->renderBegin(renderer);
            ++rendersBegun;
        }
    }

    void beginFrameOfCamera() { beginFrames(numCameras); }

    /// On all that have not begun it.
    void beginFrame() { beginFrames(plugins.size()); }

private:
    void beginFrames(size_t count) {
        for (; framesBegun < count; ++framesBegun)
            plugins[framesBegun]->frameBegin(renderer);
    }

    std::vector<PelkPluginInterface*> plugins;
    PelkRenderer& renderer;
    size_t numCameras = 0;  ///< at the front of `plugins`: one or none
    size_t rendersBegun = 0, framesBegun = 0;
};

}  // namespace Tarnkit
