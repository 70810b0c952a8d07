#pragma once

#include <vector>

#include "pelk/contract/pelk_material.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// One object of the scene: the mesh of a geometry plug-in and the material that shades it. Made by
/// RenderSetup, owned by HostRenderer, constant while frames are rendered.
struct SceneObject {
    Mesh mesh;
    std::vector<Vector> faceNormals;  ///< unit, one per triangle
    PluginBase* plugin = nullptr;     ///< what a hit gives as hitObject
    MaterialInterface* material = nullptr;
    GeomObjectInterface* renderIDs = nullptr;  ///< null: `index` is its render id
    u32 index = 0;  ///< place in HostRenderer::objects, and Embree's geometry id
};

}  // namespace Tarnkit
