#pragma once

#include <algorithm>
#include <cassert>
#include <set>
#include <string>
#include <vector>

#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/renderer.h"
#include "pelk/host/render/plugin_check.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// The life cycle of a scene's plug-ins around one render of one frame: renderBegin and frameBegin
/// on each, and from the destructor frameEnd and renderEnd on those that got so far, in reverse
/// order, whatever was thrown in between. What these throw is a warning each. Runs on the thread
/// that sets the render up, while no ray is traced.
///
///     PluginLifeCycle plugins(scene, renderer);
///     plugins.beginRender();
///     plugins.beginFrame();
class PluginLifeCycle {
public:
    PluginLifeCycle(Scene& scene_, PelkRenderer& renderer_)
        : scene(scene_), plugins(scene.collect<PelkPluginInterface>()), renderer(renderer_) {
        // Plug-ins read the camera's matrix and position from the frame data in frameBegin, so the
        // camera goes first, and between its frameBegin and theirs the host fills these in.
        PluginBase* const camera = scene.camera ? scene.camera->getPlugin() : nullptr;
        const auto others =
            std::stable_partition(plugins.begin(), plugins.end(),
                                  [camera](auto* plugin) { return plugin->getPlugin() == camera; });
        numCameras = static_cast<std::size_t>(others - plugins.begin());
    }

    ~PluginLifeCycle() {
        tellAfterHits();
        while (framesBegun > 0)
            end("frameEnd", *plugins[--framesBegun], &PelkPluginInterface::frameEnd);
        while (rendersBegun > 0)
            end("renderEnd", *plugins[--rendersBegun], &PelkPluginInterface::renderEnd);
    }

    /// Comes before any frame begins.
    void beginRender() {
        for (PelkPluginInterface* plugin : plugins) {
            const ScopedCallNote note("renderBegin", instanceOf(*plugin));
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
        while (framesBegun < count) {
            const std::size_t index = framesBegun;
            checks.emplace_back(*plugins[index]);
            {
                const ScopedCallNote note("frameBegin", instanceOf(*plugins[index]));
                plugins[index]->frameBegin(renderer);
            }
            ++framesBegun;
            // What it shows is the same for all of a kind.
            if (checkedKinds.insert(instanceAt(index)->getPluginDesc()).second)
                tell(index, "begins", checks.back().afterFrameBegin());
        }
    }

    /// What is thrown is a warning: the picture is done, and the others are to end as well.
    void end(const char* operation, PelkPluginInterface& plugin,
             void (PelkPluginInterface::*call)(PelkRenderer&)) {
        try {
            const ScopedCallNote note(operation, instanceOf(plugin));
            (plugin.*call)(renderer);
        } catch (...) {
            const std::string failure = failureText();
            if (MessageLog* const log = renderer.sequenceData.log)
                log->warning("%s", failure.c_str());
        }
    }

    static Plugin& instanceOf(PelkPluginInterface& plugin) {
        return static_cast<Plugin&>(*plugin.getPlugin());
    }

    Plugin* instanceAt(std::size_t index) const {
        return static_cast<Plugin*>(plugins[index]->getPlugin());
    }

    void tellAfterHits() noexcept {
        try {
            for (std::size_t i = 0; i < framesBegun; ++i)
                tell(i, "ends", checks[i].afterHits());
        } catch (...) {
            // No memory for words.
        }
    }

    /// Tells those who want to know more, once in all frames of the scene at each `moment`.
    void tell(std::size_t index, const char* moment, const std::vector<std::string>& findings) {
        MessageLog* const log = renderer.sequenceData.log;
        const std::string name = instanceName(instanceAt(index));
        if (!log || findings.empty() || !scene.isNews(name + ' ' + moment))
            return;
        for (const std::string& finding : findings)
            log->info("\"%s\": %s", name.c_str(), finding.c_str());
    }

    Scene& scene;
    std::vector<PelkPluginInterface*> plugins;
    std::vector<PluginCheck> checks;  // of those that have begun their frame
    std::set<const PluginDesc*> checkedKinds;
    PelkRenderer& renderer;
    std::size_t numCameras = 0;  ///< at the front of `plugins`: one or none
    // So many from the front have begun, each counted once that is done.
    std::size_t rendersBegun = 0, framesBegun = 0;
};

}  // namespace Tarnkit
