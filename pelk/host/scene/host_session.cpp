#include "pelk/host/scene/host_session.h"

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <tuple>

#include "pelk/contract/desc_of.h"
#include "pelk/contract/plugin.h"
#include "pelk/host/plugins/brdf_glossy.h"
#include "pelk/host/plugins/bsdf_glass.h"
#include "pelk/host/plugins/camera_orthographic.h"
#include "pelk/host/plugins/camera_perspective.h"
#include "pelk/host/plugins/channel_plugin.h"
#include "pelk/host/plugins/geom_box.h"
#include "pelk/host/plugins/geom_mesh.h"
#include "pelk/host/plugins/geom_quad.h"
#include "pelk/host/plugins/geom_sphere.h"
#include "pelk/host/plugins/geom_sweep.h"
#include "pelk/host/plugins/light_area.h"
#include "pelk/host/plugins/light_dome.h"
#include "pelk/host/plugins/light_point.h"
#include "pelk/host/plugins/light_sphere.h"
#include "pelk/host/plugins/light_spot.h"
#include "pelk/host/plugins/light_sun.h"
#include "pelk/host/plugins/tex_checker.h"
#include "pelk/host/plugins/tex_constant.h"
#include "pelk/host/plugins/tex_facing.h"
#include "pelk/host/plugins/tex_gradient.h"
#include "pelk/host/plugins/tex_image.h"
#include "pelk/host/plugins/tex_noise.h"
#include "pelk/host/plugins/uvwgen_environment.h"
#include "pelk/host/plugins/uvwgen_map.h"
#include "pelk/host/plugins/volume_medium.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/interface_names.h"
#include "pelk/host/scene/plugin_registry.h"
#include "pelk/platform/file.h"

namespace Tarnkit {

std::string libraryText(const std::string& path) {
    return path.empty() ? "this program" : path;
}

std::string ShadowedPlugin::toText() const {
    return library + ": " + name + " (id " + std::to_string(id) + ") is passed over for that of " +
           libraryText(by);
}

const ParameterDesc* PluginKind::findParameter(std::string_view name) const {
    for (const ParameterDesc* parameter : parameters) {
        if (name == parameter->name)
            return parameter;
    }
    return nullptr;
}

namespace {

template <std::size_t N>
consteval bool areUnique(std::array<u32, N> ids) {
    std::sort(ids.begin(), ids.end());
    return std::adjacent_find(ids.begin(), ids.end()) == ids.end();
}

/// A descriptor for each class of a list.
template <class... T>
struct DescsOf {
    // Hosts find a kind by its id too.
    static_assert(areUnique(std::array{T::kID...}));
    std::tuple<DescOf<T>...> all;
};

}  // namespace

/// The kinds that this host comes with, sorted by the names of their classes. They are registered
/// in this order, which is the one in which the manager enumerates them, behind those of modules.
struct HostSession::OwnPlugins {
    DescsOf<BRDFGlossy, BSDFGlass, CameraOrthographic, CameraPerspective, ChannelPlugin, GeomBox,
            GeomMesh, GeomQuad, GeomSphere, GeomSweep, LightArea, LightDome, LightPoint,
            LightSphere, LightSpot, LightSun, TexChecker, TexConstant, TexFacing, TexGradient,
            TexImage, TexNoise, UVWGenEnvironment, UVWGenMap, VolumeMedium>
        descs;
};

namespace {

/// An instance that is made to be asked for its interfaces, and deleted at the end of the scope.
class Probe {
public:
    Probe(const PluginKind& kind, PelkPluginHost* host) : desc(*kind.desc) {
        const ScopedCallNote note("newPlugin", kind.library.c_str(), kind.getName());
        plugin = desc.newPlugin(host);
    }
    /// Throws what the plug-in throws, unless it has thrown before.
    ~Probe() noexcept(false) {
        if (!plugin)
            return;
        const ScopedCallNote note("deletePlugin", *plugin);
        try {
            desc.deletePlugin(plugin);
        } catch (...) {
            if (std::uncaught_exceptions() == 0)
                throw;
        }
    }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    Plugin* get() const { return plugin; }

private:
    PluginDesc& desc;
    Plugin* plugin = nullptr;
};

}  // namespace

HostSession::HostSession()
    : registry(std::make_unique<PluginRegistry>()),
      own(std::make_unique<OwnPlugins>()),
      manager(newDefaultPluginManager()) {
    manager->setRefusedCallback(registry.get());
    std::apply([&](auto&... desc) { (manager->registerPluginDesc(&desc, registry.get()), ...); },
               own->descs.all);
    registry->listKinds(*manager);
}

HostSession::~HostSession() {
    manager->release();
}

namespace {

/// Code of plug-ins runs with all that the user may do.
constexpr const char* kUntrusted = "anyone may write to it; expected a plug-in to be protected";

}  // namespace

void HostSession::loadModules(const std::string& directories, MessageLog* log) {
    for (const std::string& file : findModules(directories))
        loadModule(file, log);
    registry->listKinds(*manager);
}

std::vector<std::string> HostSession::findModules(const std::string& directories) {
    std::vector<std::string> files;
    std::size_t begin = 0;
    while (begin <= directories.size()) {
        const std::size_t end = std::min(directories.find(';', begin), directories.size());
        std::string directory = directories.substr(begin, end - begin);
        begin = end + 1;
        if (directory.empty())
            continue;
        std::error_code none;
        if (!std::filesystem::is_directory(platform::nativePath(directory), none)) {
            registry->refused(directory.c_str(), "no such directory");
            continue;
        }
        if (platform::isWritableByAnyone(directory)) {
            registry->refused(directory.c_str(), kUntrusted);
            continue;
        }
        if (directory.back() != '/' && directory.back() != '\\')
            directory += '/';
        for (const std::string& name : platform::listFiles(directory + "*.so"))
            files.push_back(platform::nativePath(directory + name));
    }
    return files;
}

void HostSession::loadModule(const std::string& path, MessageLog* log) {
    std::error_code error;
    const auto file = std::filesystem::canonical(path, error);
    if (!triedFiles.insert(error ? path : file.string()).second)
        return;
    if (platform::isWritableByAnyone(path))
        return registry->refused(path.c_str(), kUntrusted);
    // By its path and not by a mask: a library that throws would keep those behind it from loading.
    manager->loadLibraryFile(platform::fullPath(path).c_str(), registry.get(), log);
    registry->listKinds(*manager);
}

const std::vector<RejectedLibrary>& HostSession::getRejected() const {
    return registry->rejected;
}

const std::vector<ShadowedPlugin>& HostSession::getShadowed() const {
    return registry->shadowed;
}

std::string HostSession::getRejectedText() const {
    std::string text;
    for (const RejectedLibrary& library : registry->rejected)
        text += "; refused: " + library.path + " (" + library.reason + ")";
    return text;
}

std::vector<const PluginKind*> HostSession::getKinds() const {
    std::vector<const PluginKind*> kinds;
    for (const auto& kind : registry->kinds)
        kinds.push_back(kind.get());
    return kinds;
}

std::vector<std::string_view> HostSession::getKindNames() const {
    std::vector<std::string_view> names;
    for (const auto& kind : registry->kinds)
        names.push_back(kind->getName());
    return names;
}

const PluginKind* HostSession::findKind(std::string_view name) const {
    // Its instances are made by name: what is told of a kind must be what the manager has.
    const PluginDesc* const desc = manager->getPluginDesc(std::string(name).c_str());
    for (const auto& kind : registry->kinds) {
        if (kind->desc == desc)
            return kind.get();
    }
    return nullptr;
}

std::vector<const char*> HostSession::getInterfaceNames(const PluginKind& kind) const {
    std::vector<const char*> names;
    const std::string what = std::string(kind.getName()) + " gives no instance";
    registry->guard(kind.library, what + ": ", [&] {
        const Probe probe(kind, registry.get());
        if (!probe.get())
            return registry->refused(kind.library.c_str(), what.c_str());
        const ScopedCallNote note("getInterface", *probe.get());
        for (const InterfaceName& known : knownInterfaces()) {
            if (probe.get()->getInterface(known.id))
                names.push_back(known.name);
        }
    });
    return names;
}

PluginManager& HostSession::getManager() const {
    return *manager;
}

PelkPluginHost* HostSession::getPluginHost() const {
    return registry.get();
}

}  // namespace Tarnkit
