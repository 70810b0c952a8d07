#pragma once

#include <map>
#include <string>
#include <vector>

#include "pelk/contract/plugin.h"

namespace Tarnkit {

/// The graph of references among the materials, BSDFs and textures of a scene. Shading recurses
/// along them at each hit, so the graph must have no cycle, and no path so long that it overflows
/// the stack. Depth-first search finds both.
class SceneReferences {
public:
    /// Notes that `parameter` of `from` refers to `to`. Passed over if one of them has no interface
    /// that shading calls (lights, cameras, geometry), and for "bump_brdf": a material names there
    /// the bump material that wraps it. That cycle ends, as its `shade` asks the bump for a
    /// sampler, and its `getBSDF`, which the bump calls in turn, asks nobody.
    void add(Plugin* from, std::string_view parameter, Plugin* to);

    /// Returns false if there is a cycle, or a path of more than 100 plug-ins; `culprit` is then a
    /// plug-in on it, whose parameters the user can change, and `error` says what is wrong. To be
    /// called once.
    bool check(Plugin*& culprit, std::string& error);

private:
    enum class State {
        New,
        Open,  ///< on `path`: to meet it again closes a cycle
        Done
    };
    struct Node {
        State state = State::New;
        int height = 1;  ///< plug-ins on the longest way down, this one included
        std::vector<Plugin*> targets;
    };

    bool visit(Plugin* plugin, std::string& error);
    bool refuseLoop(Plugin* plugin, std::string& error) const;

    std::map<Plugin*, Node> nodes;
    std::vector<Plugin*> order;  // as they were added, so that messages don't depend on addresses
    std::vector<Plugin*> path;   // from the plug-in where the search began to the present one
};

}  // namespace Tarnkit
