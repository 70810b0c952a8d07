// Blocks of pixels from a wire: refused without a trace, or taken to the last bit.

#include "pelk/support/regions/transfer_block.h"

#include "fuzz/fuzz_input.h"
#include "pelk/contract/channel_alias.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes blockOf(PKRegionData& region) {
    Bytes block(static_cast<std::size_t>(region.getBuffer(nullptr, 0)));
    require(region.getBuffer(block.data(), std::ssize(block)) == 1, "a region gives its block");
    return block;
}

/// Without the computer's name, which is always the region's own, and the end, which nobody reads.
Bytes content(Bytes block, std::span<const TransferChannel> channels) {
    TransferBlock view;
    view.read(block.data(), channels);
    std::int64_t size = sizeof(TransferHeader);
    for (const TransferChannel& channel : channels)
        size +=
            4 + (channel.hasPixels ? view.header.pixelCount() * channelTypeSize(channel.type) : 0);
    block.resize(static_cast<std::size_t>(size));
    std::fill_n(block.begin() + 4, 32, std::uint8_t{0});
    return block;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    TestChannels channels;
    std::vector<TransferChannel> known;
    for (int count = input.between(0, 5); count > 0; --count) {
        const int type = input.between(1, 6);
        const bool stands = input.between(0, 3) > 0;
        known.push_back({type, stands});
        channels.add(type, input.between(-1, 40), "c", stands ? 0 : kChannelNoBuffer);
    }
    PKRegionData region;
    region.setRect(0, 0, 4, 3);
    region.setChannels(channels.list);
    region.beginRendering();
    const Bytes before = blockOf(region);
    Bytes block = input.rest();
    block.shrink_to_fit();
    if (region.setBuffer(block.data(), std::ssize(block)).isError())
        require(blockOf(region) == before, "a refused block changes nothing");
    else if (region.findChannelByAlias(kAliasHostStamp) < 0)
        require(content(blockOf(region), known) == content(block, known),
                "a block comes back as it was");
    return 0;
}
