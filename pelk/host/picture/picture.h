#pragma once

#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

/// The picture that a render fills, with all its channels: beauty, which is linear colour
/// multiplied by alpha already, is channel 0, alpha is channel 1.
class Picture {
public:
    /// Gives the picture its size and channels, and all pixels the value of where nothing was hit.
    /// The channel objects are not kept. Memory failure, and a size beyond reason, is an
    /// ExceptionMsg.
    void begin(int width, int height, ChannelList channels);

    /// Copies the pixels of a tile inside the picture, which has the same channels. Tiles that
    /// don't overlap may be copied from different threads at once.
    void copyTile(PKRegionData& tile);

    int getWidth() { return region.getWidth(); }
    int getHeight() { return region.getHeight(); }
    /// What pixels are read from.
    PKRegionData& getRegion() { return region; }

private:
    PKRegionData region;
};

}  // namespace Tarnkit
