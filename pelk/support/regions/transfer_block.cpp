#include "pelk/support/regions/transfer_block.h"

#include <algorithm>
#include <cstring>

#include "pelk/support/regions/channel_record.h"

namespace Tarnkit {

namespace {

constexpr const char* kWhere = "transfer block";
constexpr int kBadFormat = 3;  // as ErrorChain::getErrorText has it

/// Bytes of a channel in the block, its type included.
std::int64_t channelBytes(const TransferChannel& channel, std::int64_t pixelCount) {
    return 4 + (channel.hasPixels ? channelTypeSize(channel.type) * pixelCount : 0);
}

int typeAt(const u8* place) {
    int type;
    std::memcpy(&type, place, sizeof type);
    return type;
}

ErrorChain checkHeader(const TransferHeader& header, std::size_t channelCount) {
    if (header.magic != kTransferMagic)
        return ErrorChain::makeError(kWhere, kBadFormat, "begins with 0x%08X, expected 0x%08X",
                                     header.magic, kTransferMagic);
    const std::int64_t width = std::int64_t{header.x1} - header.x0;
    const std::int64_t height = std::int64_t{header.y1} - header.y0;
    if (std::min(width, height) < 0 || std::max(width, height) > kMaxTransferSide ||
        width * height > kMaxTransferPixels)
        return ErrorChain::makeError(
            kWhere, kBadFormat,
            "has a rectangle of %lld x %lld pixels, expected at most %d a side and %lld in all",
            static_cast<long long>(width), static_cast<long long>(height), kMaxTransferSide,
            static_cast<long long>(kMaxTransferPixels));
    if (header.channelCount != static_cast<std::int64_t>(channelCount))
        return ErrorChain::makeError(kWhere, kBadFormat, "has %d channels, expected %zu",
                                     header.channelCount, channelCount);
    return {};
}

}  // namespace

std::int64_t transferSize(std::span<const TransferChannel> channels, std::int64_t pixelCount) {
    std::int64_t size = sizeof(TransferHeader) + 4;
    for (const TransferChannel& channel : channels)
        size += 4 + channelTypeSize(channel.type) * pixelCount;
    return size;
}

bool TransferBlock::read(const void* data, std::span<const TransferChannel> channels) {
    std::memcpy(&header.magic, data, sizeof header.magic);
    if (header.magic != kTransferMagic)
        return false;
    std::memcpy(&header, data, sizeof header);
    pixels.clear();
    const u8* at = static_cast<const u8*>(data) + sizeof header;
    const std::size_t count = static_cast<std::size_t>(std::max(header.channelCount, 0));
    for (const TransferChannel& channel : channels.first(std::min(count, channels.size()))) {
        if (typeAt(at) != channel.type)
            break;
        pixels.push_back(channel.hasPixels ? at + 4 : nullptr);
        at += channelBytes(channel, header.pixelCount());
    }
    return true;
}

ErrorChain checkTransferBlock(const void* data, std::int64_t size,
                              std::span<const TransferChannel> channels) {
    TransferHeader header;
    if (size < static_cast<std::int64_t>(sizeof header))
        return ErrorChain::makeError(kWhere, kBadFormat,
                                     "ends after %lld bytes, expected %zu of a header",
                                     static_cast<long long>(size), sizeof header);
    std::memcpy(&header, data, sizeof header);
    if (ErrorChain error = checkHeader(header, channels.size()); error.isError())
        return error;
    const std::int64_t pixelCount = header.pixelCount();
    const std::int64_t expected = transferSize(channels, pixelCount);
    if (size != expected)
        return ErrorChain::makeError(kWhere, kBadFormat, "has %lld bytes, expected %lld",
                                     static_cast<long long>(size),
                                     static_cast<long long>(expected));
    const u8* at = static_cast<const u8*>(data) + sizeof header;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        if (typeAt(at) != channels[i].type)
            return ErrorChain::makeError(kWhere, kBadFormat, "channel %zu has type %d, expected %d",
                                         i, typeAt(at), channels[i].type);
        at += channelBytes(channels[i], pixelCount);
    }
    return {};
}

}  // namespace Tarnkit
