#include "pelk/host/picture/picture.h"

#include <cstring>

namespace Tarnkit {

namespace {

/// Copies `count` neighbouring pixels. Buffers are paged, so a run may end before the row does.
void copyRow(ChannelBuffer& from, int fromIndex, ChannelBuffer& to, int toIndex, int count) {
    while (count > 0) {
        const ChannelBuffer::Run source = from.run(fromIndex, count);
        const ChannelBuffer::Run target = to.run(toIndex, source.count);
        if (target.count == 0)
            return;
        std::memcpy(target.data, source.data,
                    static_cast<std::size_t>(target.count) * from.getItemSize());
        fromIndex += target.count;
        toIndex += target.count;
        count -= target.count;
    }
}

}  // namespace

void Picture::begin(int width, int height, ChannelList channels) {
    region.setChannels(channels);
    region.setRect(0, 0, width, height);
    region.beginRendering();
    region.detachChannels();
}

void Picture::copyTile(PKRegionData& tile) {
    int x0, y0, x1, y1, width, height;
    tile.getRect(x0, y0, x1, y1, width, height);
    for (int i = 0; i < tile.getNumChannels(); ++i) {
        ChannelBuffer& from = *tile.getChannels()[i].buffer;
        ChannelBuffer& to = *region.getChannels()[i].buffer;
        for (int y = y0; y < y1; ++y)
            copyRow(from, (y - y0) * width, to, y * getWidth() + x0, width);
    }
}

}  // namespace Tarnkit
