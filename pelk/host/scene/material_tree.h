#pragma once

#include <string>
#include <vector>

#include "pelk/contract/plugin.h"

namespace Tarnkit {

class HostSession;
class Scene;

/// A plug-in of a scene, and what its parameters refer to: the shading network as a tree, for
/// people to read. A plug-in that is referred to twice stands in it twice.
struct MaterialTree {
    Plugin* plugin = nullptr;
    std::string parameter;   ///< by which the plug-in above refers to this one; "list[1]" in a list
    bool seenAbove = false;  ///< also among its own ancestors: a cycle, not followed again
    std::vector<MaterialTree> references;
};

/// Follows all references from a plug-in on, in the order of its parameters, at the scene's time.
/// `root` is an instance of the scene.
MaterialTree followReferences(const HostSession& session, const Scene& scene, Plugin* root);

}  // namespace Tarnkit
