#include "pelk/host/picture/picture.h"

namespace Tarnkit {

void Picture::begin(int width, int height, ChannelList channels) {
    region.setChannels(channels);
    region.setRect(0, 0, width, height);
    region.beginRendering();
    region.detachChannels();
}

}  // namespace Tarnkit
