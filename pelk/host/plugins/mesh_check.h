#pragma once

#include <string>
#include <string_view>

namespace Tarnkit {

/// Finds truncated mesh files, which the import library reads as far as they go, or reports badly.
/// `text` is the whole file; `ending` its name's, in lower case, ".obj", ".ply", ".gltf" or ".glb";
/// others pass. Returns false with the reason in `error`.
bool checkMeshText(std::string_view text, std::string_view ending, std::string& error);

}  // namespace Tarnkit
