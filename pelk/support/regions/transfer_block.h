#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "pelk/base/error_chain.h"
#include "pelk/base/types.h"

namespace Tarnkit {

// The flat block in which a region passes from one computer to another: PKRegionData::getBuffer
// writes it, PKRegionData::setBuffer reads it back. Numbers are 32-bit in the byte order of the
// machine and packed, so a block may stand at any address:
//
//     TransferHeader                      56 bytes
//     for each channel, in order:
//         its type                        4 bytes
//         its pixels, if it has any       width * height * channelTypeSize(type) bytes
//     zeros                               4 bytes, and as many as the pixels of the channels
//                                         without any would have taken
//
// The block doesn't say which channels have pixels, nor how they are called. Both ends must know
// the channels from elsewhere; what they know is a list of TransferChannel. There is no checksum:
// a block that comes from a file or a wire goes through checkTransferBlock first, which no wrong
// number passes, and what guards the values of the pixels is up to the file around it.

/// The first number of every block. Read in the other byte order it is another one, so blocks from
/// machines of that order are refused.
inline constexpr u32 kTransferMagic = 0x0F000002;

/// Pixels that a side of the rectangle may have in a block from outside. With the next limit it
/// keeps sums of sizes far from the end of 64 bits.
inline constexpr int kMaxTransferSide = 65536;
/// Pixels that the rectangle may have altogether in a block from outside.
inline constexpr std::int64_t kMaxTransferPixels = std::int64_t{1} << 28;

/// The head of a block, byte for byte.
struct TransferHeader {
    u32 magic = kTransferMagic;
    char hostName[32] = "";  ///< the computer that rendered the region; see `host`
    /// The rectangle in pixels of the image; `x1` and `y1` are exclusive.
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int channelCount = 0;

    /// The name up to its zero. A name from outside may lack one and then has 32 characters.
    std::string_view host() const {
        const std::string_view all(hostName, sizeof hostName);
        return all.substr(0, all.find('\0'));
    }
    /// Pixels of the rectangle; 0 for an empty or inverted one. Of sides longer than an integer
    /// holds, as wrong bytes may have them, fewer than they say.
    std::int64_t pixelCount() const {
        const auto side = [](int from, int to) {
            return std::clamp<std::int64_t>(std::int64_t{to} - from, 0, INT_MAX);
        };
        return side(x0, x1) * side(y0, y1);
    }
};
static_assert(sizeof(TransferHeader) == 56);

/// What both ends know of a channel.
struct TransferChannel {
    int type = 0;           ///< of ChannelType; decides the bytes of a pixel
    bool hasPixels = true;  ///< false for one whose pixels stand elsewhere: nothing is transferred
};

/// Bytes of the block of so many pixels. Channels without pixels count as if they had some, so a
/// block may be longer than what is written into it.
std::int64_t transferSize(std::span<const TransferChannel> channels, std::int64_t pixelCount);

/// A block as it is read: the header, and where the pixels are. Points into the block.
struct TransferBlock {
    TransferHeader header;
    /// For each channel that was read, its first pixel; null without pixels. Not aligned.
    std::vector<const u8*> pixels;

    /// Reads the block of a trusted writer, whose length is taken from its own numbers: `data` must
    /// have all that the header and `channels` announce. Channels beyond the shorter of the two
    /// lists are not read, and reading stops at the first whose type is another than expected, as
    /// what follows it can't be placed; `pixels` then has those before it. False for a block
    /// with another magic number, of which nothing else is read.
    bool read(const void* data, std::span<const TransferChannel> channels);
};

/// Whether `size` bytes from outside are one whole block of exactly these channels: magic number,
/// sides and pixels of the rectangle within the limits above, number and types of the channels, and
/// the length to the byte. A block that was cut, or with any bit of its numbers changed, fails. No
/// byte beyond `size` is read, and nothing is allocated but the words of the error, so this comes
/// before a region makes room. Afterwards `TransferBlock::read` of the same channels is safe.
///
/// No error, or one record that says what was found and what was expected. `data` may be null if
/// `size` is 0.
ErrorChain checkTransferBlock(const void* data, std::int64_t size,
                              std::span<const TransferChannel> channels);

/// Takes the bytes of a block in order, as they are written; they are valid during the call alone.
/// False ends the writing, for a file that can't be written.
using TransferSink = std::function<bool(const void* bytes, std::size_t count)>;

}  // namespace Tarnkit
