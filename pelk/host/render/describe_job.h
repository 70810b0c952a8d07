#pragma once

#include <string>

namespace Tarnkit {

class MessageLog;
class RTMtlInterface;
class Scene;

/// What became of describeMaterial.
struct DescribeResult {
    bool ok = false;       ///< false: `error` says why
    bool handled = false;  ///< whether the material knows the section
    std::string text;      ///< empty if the section is unknown
    std::string error;
};

/// Asks a material of the scene for one section of the text by which it describes itself to
/// renderers on the GPU: "MaterialDescriptor", what each material is, or "HierarchyDescriptor", the
/// shape of the tree below it. The plug-ins begin a render and a frame at the scene's time for it;
/// no geometry is built and no ray traced. `log` may be null. Nothing is thrown: `error` of the
/// result has the words.
DescribeResult describeMaterial(Scene& scene, RTMtlInterface& material, const char* section,
                                MessageLog* log);

}  // namespace Tarnkit
