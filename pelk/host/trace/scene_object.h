#pragma once

#include <vector>

#include "pelk/contract/pelk_material.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// A geometry plug-in as the renderer sees it: its triangles and its material.
struct SceneObject {
    Mesh mesh;
    std::vector<Vector> faceNormals;  ///< unit, one per triangle
    PluginBase* plugin = nullptr;     ///< what a hit gives as hitObject
    MaterialInterface* material = nullptr;
    GeomObjectInterface* renderIDs = nullptr;  ///< null: its number stands for it
    u32 index = 0;                             ///< number of the object in the scene, from 0
};

}  // namespace Tarnkit
