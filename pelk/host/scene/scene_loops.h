#pragma once

#include <map>
#include <string>
#include <vector>

#include "pelk/contract/plugin.h"

namespace Tarnkit {

/// What refers to what among the materials, BSDFs and textures of a scene. Shading follows these
/// references, so they must end, and not too deep for the stack.
class SceneReferences {
public:
    /// Notes that `parameter` of `from` refers to `to`. Passed over if one of them doesn't shade,
    /// and for "bump_brdf", whose way back to a material above is what it is made for.
    void add(Plugin* from, std::string_view parameter, Plugin* to);

    /// Returns false if there is a loop, or a chain of more than 100; `culprit` is then a plug-in
    /// at which it can be mended, `error` says what is wrong.
    bool check(Plugin*& culprit, std::string& error);

private:
    enum class State { New, Open, Done };
    struct Node {
        State state = State::New;
        int height = 1;  ///< plug-ins on the longest way down, this one included
        std::vector<Plugin*> targets;
    };

    bool visit(Plugin* plugin, std::string& error);
    bool refuseLoop(Plugin* plugin, std::string& error) const;

    std::map<Plugin*, Node> nodes;
    std::vector<Plugin*> order;  // as they were added, so that messages don't depend on addresses
    std::vector<Plugin*> path;
};

}  // namespace Tarnkit
