#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

class CameraInterface;
class TextureInterface;
class HostSession;

/// The settings of a scene, with what holds where the file is silent.
struct SceneSettings {
    int width = 640, height = 480;
    int samples = 16;   ///< per pixel
    int max_depth = 8;  ///< surfaces in a row at which a path gathers light, mirrors included
    bool gi = true;     ///< surfaces light one another
    bool reflective_gi = true;    ///< indirect rays go on at mirrors, so that there are caustics
    bool gi_bump = false;         ///< indirect rays see the bumps of surfaces
    bool reflections = true;      ///< materials trace reflections
    bool depth_override = false;  ///< limits that materials have of their own don't count
    Color background;             ///< what rays see that hit nothing, where no dome stands
    Color origin;             ///< where the scene stands in the space in which the camera is placed
    double time = 0.0;        ///< at which values over time are read
    bool half_float = false;  ///< 16 bits a channel where a picture's format has them
    std::string backplate;    ///< texture that fills the picture behind the scene; may be empty
    std::string camera;       ///< instance; may be left out if there is just one camera
    std::vector<std::string> channels;  ///< names of render channels beyond colour and alpha
};

/// The name that the scene gave an instance; empty for null, or if it has none.
std::string instanceName(const Plugin* plugin);

/// A scene as it is rendered: instances of plug-ins with their parameters, and settings. Owns
/// both; the instances live in the session's plug-in manager until the scene goes.
class Scene {
public:
    explicit Scene(HostSession& hostSession) : session(hostSession) {}
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// A new instance; null if the plug-in can't make one.
    Plugin* addPlugin(const std::string& name, const char* type);
    /// Gives an instance of this scene a parameter. The older one of that name goes.
    void setParameter(Plugin* plugin, std::unique_ptr<PelkPluginParameter> parameter);

    /// All instances, in the order of the file. The life cycle is called in this order.
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
            if (auto* const offered = findInterface<Interface>(plugin))
                found.push_back(offered);
        }
        return found;
    }

    std::string file;  ///< name of the scene's file
    SceneSettings settings;
    TextureInterface* backplate = nullptr;  ///< null without one
    CameraInterface* camera = nullptr;      ///< null if the scene has none

private:
    using ParameterKey = std::pair<Plugin*, std::string>;

    HostSession& session;
    std::vector<Plugin*> plugins;
    std::map<std::string, Plugin*, std::less<>> byName;
    std::map<ParameterKey, std::unique_ptr<PelkPluginParameter>> parameters;
};

}  // namespace Tarnkit
