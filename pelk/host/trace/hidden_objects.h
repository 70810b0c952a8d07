#pragma once

#include <algorithm>

#include "pelk/contract/context.h"
#include "pelk/contract/surface_properties.h"

namespace Tarnkit {

/// The objects that rays from a surface don't meet, by a table of the surface's properties, which
/// lives as long as the frame.
struct HiddenObjects {
    const GrowTable<int>* table = nullptr;  ///< render ids, ascending; null hides nothing
    bool othersHidden = false;              ///< all but those in the table

    /// What is hidden from rays that were asked for with these bits of RayType.
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
