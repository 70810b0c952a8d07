#pragma once

#include <algorithm>
#include <cassert>
#include <vector>

#include "pelk/contract/pelk_plugin.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// The life cycle of a scene's plug-ins around one render of one frame: renderBegin and frameBegin
/// on each, and from the destructor frameEnd and renderEnd on those that got so far, in reverse
/// order, whatever was thrown in between. Runs on the thread that sets the render up, while no ray
/// is traced.
///
///     PluginLifeCycle plugins(scene, renderer);
///     plugins.beginRender();
///     plugins.beginFrame();
class PluginLifeCycle {
public:
    PluginLifeCycle(Scene& scene, PelkRenderer& renderer_)
        : plugins(scene.collect<PelkPluginInterface>()), renderer(renderer_) {
        // Plug-ins read the camera's matrix and position from the frame data in frameBegin, so the
        // camera goes first, and between its frameBegin and theirs the host fills these in.
        PluginBase* const camera = scene.camera ? scene.camera->getPlugin() : nullptr;
        const auto others =
            std::stable_partition(plugins.begin(), plugins.end(),
                                  [camera](auto* plugin) { return plugin->getPlugin() == camera; });
        numCameras = static_cast<std::size_t>(others - plugins.begin());
    }

    ~PluginLifeCycle() {
        while (framesBegun > 0)
            plugins[--framesBegun]->frameEnd(renderer);
        while (rendersBegun > 0)
            plugins[--rendersBegun]->renderEnd(renderer);
    }

    /// Comes before any frame begins.
    void beginRender() {
        for (PelkPluginInterface* plugin : plugins) {
            plugin->renderBegin(renderer);
            ++rendersBegun;
        }
    }

    /// frameBegin of the scene's camera alone, so that it can be asked for its place and axes.
    void beginFrameOfCamera() { beginFrames(numCameras); }

    /// frameBegin of all that have not begun their frame.
    void beginFrame() { beginFrames(plugins.size()); }

private:
    void beginFrames(std::size_t count) {
        assert(rendersBegun == plugins.size());
        for (; framesBegun < count; ++framesBegun)
            plugins[framesBegun]->frameBegin(renderer);
    }

    std::vector<PelkPluginInterface*> plugins;
    PelkRenderer& renderer;
    std::size_t numCameras = 0;  ///< at the front of `plugins`: one or none
    // So many from the front have begun, each counted once that is done.
    std::size_t rendersBegun = 0, framesBegun = 0;
};

}  // namespace Tarnkit
