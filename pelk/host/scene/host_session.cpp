#include "pelk/host/scene/host_session.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <tuple>
#include <unordered_map>

#include "pelk/base/text_or.h"
#include "pelk/base/thrown_text.h"
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
#include "pelk/host/scene/interface_names.h"
#include "pelk/platform/file.h"
#include "pelk/support/plugin_manager_default.h"

namespace Tarnkit {

const ParameterDesc* PluginKind::findParameter(std::string_view name) const {
    for (const ParameterDesc* parameter : parameters) {
        if (name == parameter->name)
            return parameter;
    }
    return nullptr;
}

/// What the host is to the plug-in manager: descriptors register their parameters here, and
/// libraries that were refused are noted. Keeps the lists that the session shows.
class HostSession::Registry final : public PelkPluginHost, public LibraryRefusedCallback {
public:
    void addPluginDesc(PluginDesc* desc) override { parameters[desc].clear(); }
    void removePluginDesc(PluginDesc* desc) override { parameters.erase(desc); }
    void addParameter(PluginDesc* desc, const ParameterDesc& parameter) override {
        if (parameter.name)
            parameters[desc].push_back(&parameter);
    }
    void refused(const char* path, const char* reason) override {
        const auto isSame = [&](const RejectedLibrary& library) {
            return library.path == path && library.reason == reason;
        };
        if (std::none_of(rejected.begin(), rejected.end(), isSame))
            rejected.push_back({path, reason});
    }

    /// Runs `call`, which calls into the library at `path`. What is thrown there must not end the
    /// program: it becomes an entry of `rejected`, whose reason starts with `what`.
    template <class Function>
    void guard(const std::string& path, const std::string& what, Function call);
    void listKinds(DefaultPluginManager& plugins);

    std::set<std::string> triedFiles;
    std::vector<RejectedLibrary> rejected;
    std::vector<std::unique_ptr<PluginKind>> kinds;

private:
    void addKind(PluginDesc* desc, const std::string& path, const std::string& libraryName);

    std::unordered_map<PluginDesc*, std::vector<const ParameterDesc*>> parameters;
};

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

/// A callback that hands each descriptor of a library to a function.
template <class Function>
struct EachDesc final : EnumPluginDescCallback {
    explicit EachDesc(Function f) : function(f) {}
    int process(PluginDesc* desc) override {
        function(desc);
        return 1;
    }
    Function function;
};

template <class Function>
struct EachLibrary final : EnumPluginLibCallback {
    explicit EachLibrary(Function f) : function(f) {}
    int process(PluginLibDesc* library) override {
        function(library);
        return 1;
    }
    Function function;
};

/// An instance that is made to be asked for its interfaces, and deleted at the end of the scope.
class Probe {
public:
    Probe(PluginDesc& desc_, PelkPluginHost* host) : desc(desc_), plugin(desc.newPlugin(host)) {}
    ~Probe() {
        if (plugin)
            desc.deletePlugin(plugin);
    }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    Plugin* get() const { return plugin; }

private:
    PluginDesc& desc;
    Plugin* plugin;
};

}  // namespace

template <class Function>
void HostSession::Registry::guard(const std::string& path, const std::string& what, Function call) {
    try {
        call();
    } catch (...) {
        refused(path.c_str(), (what + thrownText()).c_str());
    }
}

void HostSession::Registry::addKind(PluginDesc* desc, const std::string& path,
                                    const std::string& libraryName) {
    if (!desc)
        return;
    if (!desc->getName())
        return refused(path.c_str(), "a plug-in without a name");
    const auto known = parameters.find(desc);
    const bool listed = std::any_of(kinds.begin(), kinds.end(),
                                    [&](const auto& kind) { return kind->desc == desc; });
    if (known == parameters.end() || listed)
        return;  // refused for its id, so never registered; or from a file loaded by two names
    kinds.push_back(
        std::make_unique<PluginKind>(PluginKind{desc, path, libraryName, known->second}));
}

void HostSession::Registry::listKinds(DefaultPluginManager& plugins) {
    kinds.clear();
    EachLibrary eachLibrary([&](PluginLibDesc* library) {
        const std::string path = plugins.getLibraryFileName(library);
        guard(path, "", [&] {
            const char* const name = library->getLibraryName();
            EachDesc eachDesc([&](PluginDesc* desc) {
                guard(path, "", [&] { addKind(desc, path, textOrEmpty(name)); });
            });
            library->enumPluginDescs(&eachDesc);
        });
    });
    plugins.enumLibraries(&eachLibrary);
}

HostSession::HostSession()
    : registry(std::make_unique<Registry>()),
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

void HostSession::loadModules(const std::string& directories, MessageLog* log) {
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
        if (directory.back() != '/' && directory.back() != '\\')
            directory += '/';
        // One by one and not by mask: a library that throws would keep those behind it from
        // loading.
        for (const std::string& name : platform::listFiles(directory + "*.so")) {
            const std::string path = platform::nativePath(directory + name);
            std::error_code error;
            const auto file = std::filesystem::canonical(path, error);
            const std::string key = error ? path : file.string();
            if (registry->triedFiles.insert(key).second)
                manager->loadLibraryFile(platform::fullPath(path).c_str(), registry.get(), log);
        }
    }
    registry->listKinds(*manager);
}

const std::vector<RejectedLibrary>& HostSession::getRejected() const {
    return registry->rejected;
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
    for (const auto& kind : registry->kinds) {
        if (name == kind->getName())
            return kind.get();
    }
    return nullptr;
}

std::vector<const char*> HostSession::getInterfaceNames(const PluginKind& kind) const {
    std::vector<const char*> names;
    const std::string what = std::string(kind.getName()) + " gives no instance";
    registry->guard(kind.library, what + ": ", [&] {
        const Probe probe(*kind.desc, registry.get());
        if (!probe.get())
            return registry->refused(kind.library.c_str(), what.c_str());
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
