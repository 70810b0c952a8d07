#include "pelk/host/scene/scene.h"

#include "pelk/contract/renderer.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/support/plugin_manager.h"

namespace Tarnkit {

std::string instanceName(const Plugin* plugin) {
    return plugin ? plugin->getPluginNameOr("") : "";
}

Scene::~Scene() {
    // Instances keep pointers to their parameters, which the members own and free behind this. The
    // newest goes first.
    for (auto plugin = plugins.rbegin(); plugin != plugins.rend(); ++plugin) {
        try {
            const ScopedCallNote note("deletePlugin", **plugin);
            session.getManager().deletePlugin(*plugin);
        } catch (...) {
            const std::string failure = failureText();
            if (log)
                log->warning("%s", failure.c_str());
        }
    }
}

Plugin* Scene::addPlugin(const std::string& name, const char* type) {
    const PluginKind* const kind = session.findKind(type);
    const ScopedCallNote note("newPlugin", kind ? kind->library.c_str() : "", type, name.c_str());
    Plugin* const plugin = session.getManager().newPlugin(type, session.getPluginHost(), 0);
    if (plugin) {
        plugins.push_back(plugin);
        byName[name] = plugin;
        plugin->setPluginName(name.c_str());
    }
    return plugin;
}

void Scene::setParameter(Plugin* plugin, std::unique_ptr<PelkPluginParameter> parameter) {
    const ScopedCallNote note("setParameter", *plugin);
    auto* const target = findInterface<PelkPluginInterface>(plugin);
    if (!target)
        return;
    target->setParameter(parameter.get());
    parameters[{plugin, parameter->getName()}] = std::move(parameter);
}

Plugin* Scene::findPlugin(std::string_view name) const {
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : found->second;
}

std::vector<std::string_view> Scene::getNames() const {
    std::vector<std::string_view> names;
    for (const Plugin* plugin : plugins)
        names.push_back(plugin->getPluginName());
    return names;
}

}  // namespace Tarnkit
