#include "pelk/host/scene/scene_loops.h"

#include <algorithm>

#include "pelk/contract/material.h"

namespace Tarnkit {

namespace {

constexpr int kMostPlugins = 100;

using ShadingInterfaces =
    InterfaceList<MaterialInterface, BSDFInterface, TextureInterface, TextureFloatInterface,
                  TextureIntInterface, UVWGenInterface>;

bool shades(Plugin* plugin) {
    for (const InterfaceName& shading : ShadingInterfaces::kNames) {
        if (plugin->getInterface(shading.id))
            return true;
    }
    return false;
}

}  // namespace

void SceneReferences::add(Plugin* from, std::string_view parameter, Plugin* to) {
    if (parameter == "bump_brdf" || !shades(from) || !shades(to))
        return;
    Node& node = nodes[from];
    if (node.targets.empty())
        order.push_back(from);
    node.targets.push_back(to);
    nodes[to];
}

bool SceneReferences::check(Plugin*& culprit, std::string& error) {
    for (Plugin* const plugin : order) {
        path.clear();
        if (!visit(plugin, error)) {
            culprit = path.back();
            return false;
        }
    }
    return true;
}

bool SceneReferences::visit(Plugin* plugin, std::string& error) {
    Node& node = nodes.at(plugin);
    if (node.state == State::Open)
        return refuseLoop(plugin, error);
    if (node.state == State::Done)
        return true;
    node.state = State::Open;
    path.push_back(plugin);
    for (Plugin* const target : node.targets) {
        // The test of the path's length comes before the call: this search recurses as shading
        // does, and must not overflow the stack that it protects.
        if (static_cast<int>(path.size()) <= kMostPlugins && !visit(target, error))
            return false;
        node.height = std::max(node.height, nodes.at(target).height + 1);
        if (node.height > kMostPlugins || static_cast<int>(path.size()) > kMostPlugins) {
            error = "references run more than " + std::to_string(kMostPlugins) + " plug-ins deep";
            return false;
        }
    }
    path.pop_back();
    node.state = State::Done;
    return true;
}

bool SceneReferences::refuseLoop(Plugin* plugin, std::string& error) const {
    error = "references run in a loop: ";
    for (auto step = std::find(path.begin(), path.end(), plugin); step != path.end(); ++step)
        error += std::string((*step)->getPluginName()) + " -> ";
    error += plugin->getPluginName();
    return false;
}

}  // namespace Tarnkit
