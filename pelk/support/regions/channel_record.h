#pragma once

#include <span>

#include "pelk/base/types.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

class ChannelBuffer;

/// Channel objects by their indices, not owned. A null entry is a place without a channel:
/// setChannels and addChannels skip it, channelsMatch takes it for a match with whatever channel
/// stands there.
using ChannelList = std::span<RenderChannel* const>;

/// Bytes of one value of a channel type, in a slot and in a pixel; 0 for an unknown one. Values are
/// 32-bit floats or an int in the byte order of the machine, without padding.
constexpr int channelTypeSize(int type) {
    constexpr int kSizes[] = {0, 4, 12, 8, 4, 12, 16};
    return type >= kChannelNone && type <= kChannelAColor ? kSizes[type] : 0;
}

/// Whether values of a channel type can stand for a colour or a coverage, one number among them:
/// not ids and pairs.
constexpr bool channelTypeIsColor(int type) {
    return type != kChannelInt && type != kChannelFloat2;
}

/// One channel of a region: a row of the channel table, whose place there is the channel's index.
struct ChannelRecord {
    int type = kChannelFloat;  ///< of ChannelType
    char name[64] = "";        ///< at most 63 bytes; longer names are cut and compared as cut
    int alias = -1;            ///< of ChannelAlias; -1 for a channel of a scene's own
    ChannelBuffer* buffer = nullptr;   ///< the pixels, owned by the region; null when none
    RenderChannel* channel = nullptr;  ///< its arithmetic, not owned; may be null
    int fragmentOffset = 0;  ///< bytes from the start of a fragment's data block to the slot
    int fragmentSize = 0;    ///< bytes of the slot; 0 for a channel without one
    int flags = 0;           ///< of ChannelFlags

    /// Whether the channel has that name; not for null.
    bool hasName(const char* other) const;
    /// The slot in a data block of `blockSize` bytes; null without an object, or where the block
    /// has no room for it: a channel may be younger than the block.
    u8* slotIn(u8* block, int blockSize) const {
        const bool fits = fragmentSize > 0 && fragmentOffset <= blockSize - fragmentSize;
        return channel && fits ? block + fragmentOffset : nullptr;
    }
};

/// A channel in the list of those that share a bucket of aliases. The buckets make a write by alias
/// at a hit (Fragment::addAlias) independent of the number of channels.
struct AliasNode {
    int channelIndex = 0;
    AliasNode* next = nullptr;  ///< a channel of smaller index, or null
};

}  // namespace Tarnkit
