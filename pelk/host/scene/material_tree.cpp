#include "pelk/host/scene/material_tree.h"

#include <algorithm>

#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene.h"

namespace Tarnkit {

namespace {

class ReferenceWalk {
public:
    ReferenceWalk(const HostSession& session_, const Scene& scene_)
        : session(session_), scene(scene_) {}

    void follow(MaterialTree& node) {
        node.seenAbove = std::find(way.begin(), way.end(), node.plugin) != way.end();
        const PluginKind* const kind = session.findKind(node.plugin->getPluginTypeName());
        auto* const values = findInterface<PelkPluginInterface>(node.plugin);
        if (node.seenAbove || !kind || !values)
            return;
        way.push_back(node.plugin);
        for (const ParameterDesc* parameter : kind->parameters) {
            if (PelkPluginParameter* const value = values->getParameter(parameter->name))
                addReferences(node, parameter->name, *value);
        }
        way.pop_back();
    }

private:
    void addReferences(MaterialTree& node, const std::string& name, PelkPluginParameter& value) {
        const double time = scene.settings.time;
        const int count = value.getCount(time);
        for (int i = 0; i < std::max(count, 1); ++i) {
            const std::string place = count < 0 ? name : name + "[" + std::to_string(i) + "]";
            if (const int token = count < 0 ? -1 : value.openItem(i); token >= 0) {
                addReferences(node, place, value);
                value.closeItem(token);
            } else if (Plugin* const target =
                           count == 0 ? nullptr : find(value.getObject(i, time))) {
                node.references.push_back({target, place, false, {}});
                follow(node.references.back());
            }
        }
    }

    /// The instance of the scene that this is; null for a plain value.
    Plugin* find(PluginBase* object) const {
        const auto& plugins = scene.getPlugins();
        const auto found = std::find(plugins.begin(), plugins.end(), object);
        return found == plugins.end() ? nullptr : *found;
    }

    const HostSession& session;
    const Scene& scene;
    std::vector<Plugin*> way;
};

}  // namespace

MaterialTree followReferences(const HostSession& session, const Scene& scene, Plugin* root) {
    MaterialTree tree{root, {}, false, {}};
    ReferenceWalk(session, scene).follow(tree);
    return tree;
}

}  // namespace Tarnkit
