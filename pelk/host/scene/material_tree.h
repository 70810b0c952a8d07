#pragma once

#include <string>
#include <vector>

#include "pelk/contract/plugin.h"

namespace Tarnkit {

class HostSession;
class Scene;

/// A plug-in of a scene, and what its parameters refer to.
struct MaterialTree {
    Plugin* plugin = nullptr;
    std::string parameter;   ///< by which the plug-in above refers to this one; "list[1]" in a list
    bool seenAbove = false;  ///< refers to the way that led here, so it is not followed again
    std::vector<MaterialTree> references;
};

/// Follows all references from a plug-in on, in the order of its parameters.
MaterialTree followReferences(const HostSession& session, const Scene& scene, Plugin* root);

}  // namespace Tarnkit
