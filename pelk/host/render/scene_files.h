#pragma once

#include <string>
#include <vector>

namespace Tarnkit {

class Scene;

/// The files that a render of the scene reads, each name once: the scene's own, those that its
/// parameters name, what those read further, and the modules that its plug-ins come from. Some may
/// not be there, such as material libraries that a mesh can do without.
std::vector<std::string> inputFilesOf(const Scene& scene);

}  // namespace Tarnkit
