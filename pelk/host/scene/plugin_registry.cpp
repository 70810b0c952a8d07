#include "pelk/host/scene/plugin_registry.h"

#include <algorithm>
#include <string_view>

#include "pelk/base/text_or.h"

namespace Tarnkit {

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

bool hasText(const char* text) {
    return text && *text;
}

}  // namespace

void PluginRegistry::refused(const char* path, const char* reason) {
    const auto isSame = [&](const RejectedLibrary& library) {
        return library.path == path && library.reason == reason;
    };
    if (std::none_of(rejected.begin(), rejected.end(), isSame))
        rejected.push_back({path, reason});
}

void PluginRegistry::listKinds(DefaultPluginManager& plugins) {
    kinds.clear();
    shadowed.clear();
    shown.clear();
    EachLibrary eachLibrary([&](PluginLibDesc* library) {
        const std::string path = plugins.getLibraryFileName(library);
        guard(path, "", [&] { collect(*library, path); });
    });
    plugins.enumLibraries(&eachLibrary);
    for (const Shown& plugin : shown)
        guard(plugin.path, "", [&] { addKind(plugin, plugins); });
}

void PluginRegistry::collect(PluginLibDesc& library, const std::string& path) {
    const ScopedCallNote note("enumPluginDescs", path.c_str());
    const std::string name = textOrEmpty(library.getLibraryName());
    bool isEmpty = true;
    EachDesc eachDesc([&](PluginDesc* desc) {
        const auto isSame = [desc](const Shown& other) { return other.desc == desc; };
        // A file that was loaded by two names shows each twice.
        if (desc && std::none_of(shown.begin(), shown.end(), isSame))
            shown.push_back({desc, path, name});
        isEmpty &= !desc;
    });
    library.enumPluginDescs(&eachDesc);
    if (isEmpty && !path.empty())
        refused(path.c_str(), "no plug-in in it");
}

void PluginRegistry::addKind(const Shown& plugin, DefaultPluginManager& plugins) {
    const char* const name = plugin.desc->getName();
    const u32 id = plugin.desc->getPluginID();
    if (!hasText(name))
        return refused(plugin.path.c_str(), "a plug-in without a name");
    const Shown* const other = findSameID(plugin);
    if (other && parameters.count(plugin.desc) == 0) {
        const std::string reason = std::string(name) + ": its id " + std::to_string(id) +
                                   " is that of " + textOrEmpty(other->desc->getName()) + " of " +
                                   libraryText(other->path);
        return refused(plugin.path.c_str(), reason.c_str());
    }
    PluginDesc* const inForce = plugins.getPluginDesc(name);
    if (inForce != plugin.desc)
        return shadowed.push_back({name, id, plugin.path, pathOf(inForce)});
    kinds.push_back(std::make_unique<PluginKind>(
        PluginKind{plugin.desc, plugin.path, plugin.libraryName, usableParameters(plugin)}));
}

const PluginRegistry::Shown* PluginRegistry::findSameID(const Shown& plugin) const {
    for (const Shown& other : shown) {
        if (other.desc != plugin.desc && other.desc->getPluginID() == plugin.desc->getPluginID())
            return &other;
    }
    return nullptr;
}

std::string PluginRegistry::pathOf(const PluginDesc* desc) const {
    for (const Shown& plugin : shown) {
        if (plugin.desc == desc)
            return plugin.path;
    }
    return {};
}

/// Those that a scene can name: of two with one name the first.
std::vector<const ParameterDesc*> PluginRegistry::usableParameters(const Shown& plugin) {
    std::vector<const ParameterDesc*> usable;
    int number = 0;
    for (const ParameterDesc* const parameter : parameters[plugin.desc]) {
        ++number;
        const auto isSame = [&](const ParameterDesc* other) {
            return std::string_view(other->name) == parameter->name;
        };
        std::string fault;
        if (!hasText(parameter->name))
            fault = "parameter " + std::to_string(number) + " has no name";
        else if (std::any_of(usable.begin(), usable.end(), isSame))
            fault = std::string("the parameter \"") + parameter->name + "\" is there twice";
        else
            usable.push_back(parameter);
        if (!fault.empty())
            refused(plugin.path.c_str(), (plugin.desc->getName() + (": " + fault)).c_str());
    }
    return usable;
}

}  // namespace Tarnkit
