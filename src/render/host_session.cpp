#include "render/host_session.h"

#include <filesystem>
#include <tuple>
#include <unordered_map>

#include "frame/plugin.h"
#include "platform/file.h"
#include "render/bsdf_glass.h"
#include "render/bsdf_glossy.h"
#include "render/camera.h"
#include "render/channel_plugin.h"
#include "render/geom_mesh.h"
#include "render/geom_shapes.h"
#include "render/host_plugin.h"
#include "render/interface_names.h"
#include "render/lights.h"
#include "render/texture_image.h"
#include "render/textures.h"
#include "render/textures_procedural.h"
#include "support/plugin_manager_default.h"

namespace Tarnkit {

const ParameterDesc* PluginKind::findParameter(std::string_view name) const {
    for (const ParameterDesc* parameter : parameters) {
        if (name == parameter->name)
            return parameter;
    }
    return nullptr;
}

/// The host's side of registration, and what became of it.
class HostSession::Registry final : public PelkPluginHost, public LibraryRefusedCallback {
public:
    void addPluginDesc(PluginDesc* desc) override { parameters[desc]; }
    void removePluginDesc(PluginDesc* desc) override { parameters.erase(desc); }
    void addParameter(PluginDesc* desc, const ParameterDesc& parameter) override {
        parameters[desc].push_back(&parameter);
    }
    void refused(const char* path, const char* reason) override {
        rejected.push_back({path, reason});
    }

    void listKinds(PluginManager& plugins);

    std::vector<RejectedLibrary> rejected;
    std::vector<std::unique_ptr<PluginKind>> kinds;

private:
    std::unordered_map<PluginDesc*, std::vector<const ParameterDesc*>> parameters;
};

/// The kinds that this host comes with, in the order in which they are listed.
struct HostSession::OwnPlugins {
    template <class... T>
    using Descs = std::tuple<HostPluginDesc<T>...>;

    Descs<BRDFGlossy, BSDFGlass, CameraOrthographic, CameraPerspective, ChannelPlugin, GeomBox,
          GeomMesh, GeomQuad, GeomSphere, GeomSweep, LightArea, LightDome, LightSphere, LightSun,
          TexChecker, TexConstant, TexFacing, TexGradient, TexImage, TexNoise, UVWGenEnvironment,
          UVWGenMap, VolumeMedium>
        descs;
};

namespace {

/// Calls a function with each descriptor of a library.
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

/// An instance that is made to be asked something, and gone with the scope.
class Probe {
public:
    Probe(PluginDesc& desc_, PelkPluginHost* host) : desc(desc_), plugin(desc.newPlugin(host)) {}
    ~Probe() { desc.deletePlugin(plugin); }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    Plugin* get() const { return plugin; }

private:
    PluginDesc& desc;
    Plugin* plugin;
};

}  // namespace

void HostSession::Registry::listKinds(PluginManager& plugins) {
    kinds.clear();
    EachLibrary eachLibrary([&](PluginLibDesc* library) {
        EachDesc eachDesc([&](PluginDesc* desc) {
            const auto known = parameters.find(desc);
            if (known == parameters.end())
                return;  // refused by the manager
            char path[512] = "";
            const Probe probe(*desc, this);
            plugins.getPluginFileName(probe.get(), path, sizeof path);
            kinds.push_back(std::make_unique<PluginKind>(
                PluginKind{desc, path, library->getLibraryName(), known->second}));
        });
        library->enumPluginDescs(&eachDesc);
    });
    plugins.enumLibraries(&eachLibrary);
}

HostSession::HostSession()
    : registry(std::make_unique<Registry>()), own(std::make_unique<OwnPlugins>()) {
    DefaultPluginManager* const newManager = newDefaultPluginManager();
    newManager->setRefusedCallback(registry.get());
    manager = newManager;
    std::apply([&](auto&... desc) { (manager->registerPluginDesc(&desc, registry.get()), ...); },
               own->descs);
    registry->listKinds(*manager);
}

HostSession::~HostSession() {
    manager->release();
}

void HostSession::loadModules(const std::string& directories, MessageLog* log) {
    size_t begin = 0;
    while (begin <= directories.size()) {
        const size_t end = std::min(directories.find(';', begin), directories.size());
        std::string directory = directories.substr(begin, end - begin);
        begin = end + 1;
        if (directory.empty())
            continue;
        if (!std::filesystem::is_directory(platform::nativePath(directory))) {
            registry->refused(directory.c_str(), "no such directory");
            continue;
        }
        if (directory.back() != '/' && directory.back() != '\\')
            directory += '/';
        loadPlugins(*manager, directory.c_str(), "*.so", registry.get(), log);
    }
    registry->listKinds(*manager);
}

const std::vector<RejectedLibrary>& HostSession::getRejected() const {
    return registry->rejected;
}

std::vector<const PluginKind*> HostSession::getKinds() const {
    std::vector<const PluginKind*> kinds;
    for (const auto& kind : registry->kinds)
        kinds.push_back(kind.get());
    return kinds;
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
    const Probe probe(*kind.desc, registry.get());
    for (const InterfaceName& known : knownInterfaces()) {
        if (probe.get() && probe.get()->getInterface(known.id))
            names.push_back(known.name);
    }
    return names;
}

PluginManager& HostSession::getManager() const {
    return *manager;
}

PelkPluginHost* HostSession::getPluginHost() const {
    return registry.get();
}

}  // namespace Tarnkit
