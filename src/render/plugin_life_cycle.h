#pragma once

#include <vector>

#include "frame/pelk_plugin.h"
#include "render/scene.h"

namespace Tarnkit {

/// Calls renderBegin and frameBegin on every plug-in, and at the end frameEnd and renderEnd on
/// those that got so far, whatever happened in between.
class PluginLifeCycle {
public:
    PluginLifeCycle(Scene& scene, PelkRenderer& renderer_)
        : plugins(scene.collect<PelkPluginInterface>(EXT_PLUGIN_BASE)), renderer(renderer_) {}

    ~PluginLifeCycle() {
        while (framesBegun > 0)
            plugins[--framesBegun]->frameEnd(renderer);
        while (rendersBegun > 0)
            plugins[--rendersBegun]->renderEnd(renderer);
    }

    void begin() {
        for (PelkPluginInterface* plugin : plugins) {
            plugin->renderBegin(renderer);
            ++rendersBegun;
        }
        for (PelkPluginInterface* plugin : plugins) {
            plugin->frameBegin(renderer);
            ++framesBegun;
        }
    }

private:
    std::vector<PelkPluginInterface*> plugins;
    PelkRenderer& renderer;
    size_t rendersBegun = 0, framesBegun = 0;
};

}  // namespace Tarnkit
