#pragma once

#include <span>

#include "pelk/base/color.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// How an image surrounds the scene.
struct SkyLayout {
    int width = 0, height = 0;  ///< pixels, each at least 1
    float rotation = 0.0f;      ///< degrees about +Y by which it is moved to the right
    const char* file = "";      ///< for messages; stays the texture's
};

/// A texture that is an image of the surroundings, longitude by latitude. A light reads its pixels
/// once and looks them up by itself, instead of asking the texture at each hit. Called on one
/// thread, before rendering.
class SkyImageInterface : public PluginInterface {
public:
    static constexpr InterfaceID<SkyImageInterface> kInterfaceID{0x7E1C0007, "EXT_SKY_IMAGE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Writes the layout. False, with nothing written, if there is no image, or if its texture
    /// coordinates are other than those of directions.
    virtual bool getSkyLayout(SkyLayout& layout) const = 0;
    /// Writes the pixels of row `y`, from the top, linear and premultiplied. `row` has the width of
    /// the layout.
    virtual void readSkyRow(int y, std::span<AColor> row) const = 0;
};

}  // namespace Tarnkit
