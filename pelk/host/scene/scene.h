#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/plugin_call.h"

namespace Tarnkit {

class CameraInterface;
class MessageLog;
class TextureInterface;
class HostSession;

/// The settings of a scene, with what holds where the file is silent. scene_settings.cpp lists the
/// names that the file uses, with their limits.
struct SceneSettings {
    int width = 640, height = 480;
    int samples = 16;  ///< per pixel
    int seed = 0;      ///< each has a pattern of noise of its own
    /// Longest path in bounces, specular ones included; a hit at this depth is not shaded.
    int maxDepth = 8;
    bool gi = true;              ///< global illumination: diffuse surfaces light one another
    bool reflectiveGi = true;    ///< indirect rays are reflected and refracted: caustics
    bool giBump = false;         ///< indirect rays see bump maps
    bool reflections = true;     ///< materials trace reflections
    bool depthOverride = false;  ///< maxDepth stands in for the depth limits of materials
    Color background;            ///< radiance of rays that leave the scene and meet no dome light
    Color origin;            ///< offset from scene space to the space that the camera is placed in
    double time = 0.0;       ///< at which values over time are read
    double fps = 24.0;       ///< frames in a unit of time: frame N is at the time N / fps
    bool halfFloat = false;  ///< 16 bits a channel where a picture's format has them
    std::string backplate;   ///< texture that camera rays see behind the scene; may be empty
    std::string camera;      ///< instance; may be left out if there is just one camera
    std::vector<std::string> channels;  ///< names of render channels beyond colour and alpha
};

/// What a scene was made from, beside its settings; for telling two of them apart.
struct SceneSource {
    std::string plugins;                 ///< JSON of all instances, with overrides, on one line
    std::vector<std::string> files;      ///< that parameters name, as they are opened
    std::vector<std::string> libraries;  ///< modules that instances come from, each once
};

/// The name that the scene gave an instance; empty for null, or if it has none.
std::string instanceName(const Plugin* plugin);

/// A scene as it is rendered: instances of plug-ins with their parameters, and settings. Made by
/// readScene, and changed by nobody while it is rendered. Owns the instances and parameters: the
/// instances are made and deleted through the session's plug-in manager, so the session must
/// outlive the scene.
class Scene {
public:
    explicit Scene(HostSession& hostSession) : session(hostSession) {}
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// A new instance; null if the plug-in can't make one.
    Plugin* addPlugin(const std::string& name, const char* type);
    /// Gives an instance of this scene a parameter, and owns it from now on. The older one of that
    /// name is deleted. An instance that takes no parameters drops it.
    void setParameter(Plugin* plugin, std::unique_ptr<PelkPluginParameter> parameter);

    /// All instances, in the order of the file. Their life cycle (renderBegin, frameBegin) runs in
    /// this order too, but for the camera, whose turn comes first.
    const std::vector<Plugin*>& getPlugins() const { return plugins; }
    /// The instance of that name, or null.
    Plugin* findPlugin(std::string_view name) const;
    /// The names of all instances, in the order of the file; views into the instances.
    std::vector<std::string_view> getNames() const;

    /// That interface of every instance that offers it, in the order of the instances.
    template <class Interface>
    std::vector<Interface*> collect() const {
        std::vector<Interface*> found;
        for (Plugin* plugin : plugins) {
            const ScopedCallNote note("getInterface", *plugin);
            if (auto* const offered = findInterface<Interface>(plugin))
                found.push_back(offered);
        }
        return found;
    }

    /// Whether a subject comes for the first time: what holds for every frame need not be told with
    /// each of them.
    bool isNews(const std::string& subject) { return told.insert(subject).second; }

    std::string file;  ///< name of the scene's file
    SceneSettings settings;
    SceneSource source;
    TextureInterface* backplate = nullptr;  ///< null without one
    CameraInterface* camera = nullptr;      ///< null if the scene has none
    /// Gets what instances throw when they are deleted; the caller's, may be null.
    MessageLog* log = nullptr;

private:
    using ParameterKey = std::pair<Plugin*, std::string>;

    HostSession& session;
    std::vector<Plugin*> plugins;
    std::map<std::string, Plugin*, std::less<>> byName;
    std::map<ParameterKey, std::unique_ptr<PelkPluginParameter>> parameters;
    std::set<std::string> told;
};

}  // namespace Tarnkit
