#pragma once

#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

/// The framebuffer of a render, with all its channels: kBeautyChannel, linear and premultiplied by
/// alpha, kAlphaChannel, and the render channels that were asked for. Render threads fill it tile
/// by tile; the writers read it afterwards.
class Picture {
public:
    /// Allocates the pixels of all channels and gives each its value for "nothing hit". The channel
    /// objects are not kept. Memory failure, and a size beyond reason, is an ExceptionMsg.
    void begin(int width, int height, ChannelList channels);

    /// Copies the pixels of a tile inside the picture, which has the same channels. Tiles that
    /// don't overlap may be copied from different threads at once.
    void copyTile(PKRegionData& tile) { region.copyFrom(tile); }

    int getWidth() { return region.getWidth(); }
    int getHeight() { return region.getHeight(); }
    /// The region that holds the pixels.
    PKRegionData& getRegion() { return region; }

private:
    PKRegionData region;
};

}  // namespace Tarnkit
