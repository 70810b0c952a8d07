#pragma once

#include <cstring>

namespace Tarnkit {

/// Sections of the text in which a material tree is described.
inline constexpr char kMaterialSection[] = "MaterialDescriptor";    ///< what each material is
inline constexpr char kHierarchySection[] = "HierarchyDescriptor";  ///< the shape of the tree

/// The tags around the text of a sub-material. Each stands on its own line.
inline constexpr char kLayerBegin[] = "<coatlayer_begin>";
inline constexpr char kLayerEnd[] = "<coatlayer_end>";

/// Section names are compared in full, upper and lower case apart. A null name is no section.
inline bool isSection(const char* kind, const char* section) {
    return kind && std::strcmp(kind, section) == 0;
}

}  // namespace Tarnkit
