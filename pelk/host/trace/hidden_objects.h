#pragma once

#include <algorithm>

#include "pelk/contract/context.h"
#include "pelk/contract/surface_properties.h"

namespace Tarnkit {

/// The objects that a ray does not hit: the exclude list of the surface it left, for reflected or
/// for refracted rays (PelkSurfaceProperties). An inclusive list names the only objects that it
/// does hit. Points to the surface's table, which lives as long as the frame.
struct HiddenObjects {
    const GrowTable<int>* table = nullptr;  ///< render ids, ascending; null hides nothing
    bool othersHidden = false;              ///< an inclusive list: hides all but those in the table

    /// What a ray spawned with these bits of RayType does not hit. Of diffuse and shadow rays
    /// nothing is hidden.
    static HiddenObjects from(const PelkSurfaceProperties& surface, u32 rayFlags) {
        const bool refracts = rayFlags & kRayRefract;
        if (!refracts && !(rayFlags & kRayReflect))
            return {};
        const u32 inclusive = refracts ? kRefractionListInclusive : kReflectionListInclusive;
        const auto& table = refracts ? surface.refractionExclude : surface.reflectionExclude;
        const bool othersHidden = surface.surfaceFlags & inclusive;
        if (table.isEmpty() && !othersHidden)
            return {};
        return {&table, othersHidden};
    }

    bool contains(int renderID) const {
        return table && std::binary_search(table->begin(), table->end(), renderID) != othersHidden;
    }
};

}  // namespace Tarnkit
