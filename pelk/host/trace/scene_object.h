#pragma once

#include <optional>

#include "pelk/contract/pelk_material.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/host/trace/interfaces.h"
#include "pelk/host/trace/placement.h"
#include "pelk/host/trace/shape.h"

namespace Tarnkit {

/// One object of the scene: the shape of a geometry plug-in and the material that shades it. Made
/// by RenderSetup, owned by HostRenderer, constant while frames are rendered.
struct SceneObject {
    const Shape* shape = nullptr;  ///< owned by HostRenderer; equal objects may share it
    /// Of an instance: from the shape's space to the world's. Without it they are the same.
    std::optional<Placement> place;
    PluginBase* plugin = nullptr;  ///< what a hit gives as hitObject
    MaterialInterface* material = nullptr;
    GeomObjectInterface* renderIDs = nullptr;  ///< null: `index` is its render id
    u32 index = 0;  ///< place in HostRenderer::objects, and the id by which Embree knows it
};

}  // namespace Tarnkit
