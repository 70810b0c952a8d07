// How a region passes from one computer to another: into a flat block and back.
#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

#include "pelk/base/debug_print.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/support/regions/region_data.h"
#include "pelk/support/regions/text_stamp.h"

namespace Tarnkit {

namespace {

bool writeZeros(const TransferSink& sink, std::int64_t count) {
    static constexpr u8 kZeros[4096] = {};
    for (; count > 0; count -= std::ssize(kZeros)) {
        if (!sink(kZeros, static_cast<std::size_t>(std::min(count, std::ssize(kZeros)))))
            return false;
    }
    return true;
}

/// Writes `count` items of the buffer from `first` on.
bool writeItems(const TransferSink& sink, ChannelBuffer& buffer, int first, int count) {
    bool written = true;
    buffer.forEachRun(first, count, [&](const u8* items, int n) {
        written = written && sink(items, static_cast<std::size_t>(n) * buffer.getItemSize());
    });
    return written;
}

}  // namespace

/// The channels as a block of `pixelCount` pixels has them, once beginRendering has made room.
std::vector<TransferChannel> PKRegionData::transferChannels(std::int64_t count) const {
    std::vector<TransferChannel> list;
    list.reserve(static_cast<std::size_t>(channels.size()));
    for (const ChannelRecord& record : channels) {
        const bool made = !(record.flags & kChannelNoBuffer) && channelTypeSize(record.type) > 0;
        list.push_back({record.type, pixelCapacity < count ? made : record.buffer != nullptr});
    }
    return list;
}

/// Bytes of the region's own block; 0 if a buffer doesn't hold the whole rectangle.
std::int64_t PKRegionData::transferBytes() const {
    const std::int64_t count = pixelCount();
    const bool whole = std::none_of(channels.begin(), channels.end(), [&](const ChannelRecord& r) {
        return r.buffer && r.buffer->size() < count;
    });
    return whole && count <= INT_MAX ? transferSize(transferChannels(0), count) : 0;
}

std::int64_t PKRegionData::getBuffer(void* buffer, std::int64_t size) {
    const std::int64_t needed = transferBytes();
    if (!buffer || needed == 0)
        return needed;
    if (size < needed) {
        debugPrint("[PKRegionData::getBuffer] buffer not large enough\n");
        return 0;
    }
    u8* to = static_cast<u8*>(buffer);
    return writeBuffer([&](const void* bytes, std::size_t count) {
        std::memcpy(to, bytes, count);
        to += count;
        return true;
    });
}

bool PKRegionData::writeBuffer(const TransferSink& sink) {
    return writePart(sink, x0, y0, x1, y1, channels.size());
}

bool PKRegionData::writePart(const TransferSink& sink, int left, int top, int right, int bottom,
                             int channelCount) {
    const bool isInside = left >= x0 && top >= y0 && right <= x1 && bottom <= y1;
    if (!isInside || channelCount > channels.size() || transferBytes() == 0)
        return false;
    TransferHeader header{
        .x0 = left, .y0 = top, .x1 = right, .y1 = bottom, .channelCount = channelCount};
    std::copy_n(hostName, std::strlen(hostName), header.hostName);
    const std::int64_t count = header.pixelCount();
    std::vector<TransferChannel> list = transferChannels(0);
    list.resize(static_cast<std::size_t>(channelCount));
    std::int64_t rest = transferSize(list, count);
    if (!sink(&header, sizeof header))
        return false;
    rest -= sizeof header;
    for (int i = 0; i < channelCount; ++i) {
        const ChannelRecord& record = channels[i];
        if (!sink(&record.type, sizeof record.type))
            return false;
        rest -= sizeof record.type;
        if (!record.buffer)
            continue;
        for (int y = top; y < bottom; ++y) {
            if (!writeItems(sink, *record.buffer, (y - y0) * width + left - x0, right - left))
                return false;
        }
        rest -= count * record.buffer->getItemSize();
    }
    return writeZeros(sink, rest);
}

void PKRegionData::setBuffer(const void* data) {
    TransferBlock block;
    if (!block.read(data, {}))  // the header alone: channels get their pixels by its rectangle
        return;
    setRect(block.header.x0, block.header.y0, block.header.x1, block.header.y1);
    beginRendering();
    block.read(data, transferChannels(0));
    const int count = static_cast<int>(pixelCount());
    for (std::size_t i = 0; i < block.pixels.size(); ++i) {
        const u8* from = block.pixels[i];
        if (!from)
            continue;
        ChannelBuffer& buffer = *channels[static_cast<int>(i)].buffer;
        buffer.forEachRun(0, count, [&](u8* to, int n) {
            const std::size_t bytes = static_cast<std::size_t>(n) * buffer.getItemSize();
            std::memcpy(to, from, bytes);
            from += bytes;
        });
    }
    stamp(block);
}

/// Writes the name of the block's computer on the last stamp channel that the block has reached. A
/// channel of ids or pairs has no room for a colour.
void PKRegionData::stamp(const TransferBlock& block) {
    const int read = static_cast<int>(block.pixels.size());
    int index = std::min({read + 1, block.header.channelCount, channels.size()}) - 1;
    while (index >= 0 && channels[index].alias != kAliasHostStamp)
        --index;
    if (!hasPixels(index) || channelTypeSize(channels[index].type) < 12)
        return;
    const ChannelRecord& record = channels[index];
    auto* const layout = findInterface<StampModeInterface>(record.channel);
    stampName(*record.buffer, width, height, std::string(block.header.host()).c_str(),
              layout ? layout->getStampMode() : kStampRight);
}

ErrorChain PKRegionData::setBuffer(const void* data, std::int64_t size) {
    TransferHeader header;
    if (size >= static_cast<std::int64_t>(sizeof header))
        std::memcpy(&header, data, sizeof header);
    ErrorChain error = checkTransferBlock(data, size, transferChannels(header.pixelCount()));
    if (!error.isError())
        setBuffer(data);
    return error;
}

}  // namespace Tarnkit
