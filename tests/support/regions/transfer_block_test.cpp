#include "pelk/support/regions/transfer_block.h"

#include <gmock/gmock.h>

#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

using Bytes = std::vector<u8>;

class TransferBlockTest : public testing::Test {
protected:
    /// A region of 5 x 3 pixels, of which the numbers begin with `value`.
    void begin(PKRegionData& region, float value) {
        region.setRect(-2, 7, 3, 10);
        region.setChannels(c.list);
        region.beginRendering();
        for (const ChannelRecord& record : region.getChannels()) {
            for (int i = 0; record.buffer && i < 15; ++i)
                std::fill_n(reinterpret_cast<float*>(record.buffer->item(i)),
                            channelTypeSize(record.type) / 4, value++);
        }
    }
    /// The region's block in memory of just its size, so that sanitizers see a read beyond it.
    static Bytes blockOf(PKRegionData& region) {
        Bytes block(static_cast<std::size_t>(region.getBuffer(nullptr, 0)), 0xAA);
        EXPECT_EQ(region.getBuffer(block.data(), std::ssize(block)), 1);
        return block;
    }
    template <class Change>
    static Bytes changed(Bytes block, Change change) {
        change(block);
        return block;
    }

    TransferBlockTest() {
        c.add(kChannelColor, 126, "beauty");
        c.add(kChannelAColor, 0, "elsewhere", kChannelNoBuffer);
        c.add(kChannelInt, 6, "ids");
    }
    TestChannels c;
    PKRegionData sender, receiver;
};

TEST_F(TransferBlockTest, CutOrChangedBlocksAreRefusedAndChangeNothing) {
    begin(sender, 100);
    begin(receiver, 500);
    receiver.setRect(0, 0, 3, 4);
    const Bytes block = blockOf(sender), before = blockOf(receiver);
    ASSERT_EQ(block.size(), 15 * (12 + 16 + 4) + 60 + 3 * 4u);
    const auto expectRefused = [&](const Bytes& bad) {
        const ErrorChain error = receiver.setBuffer(bad.data(), std::ssize(bad));
        EXPECT_TRUE(error.isError());
        ASSERT_EQ(blockOf(receiver), before) << error.getRecordText(0);
    };
    for (std::size_t length = 0; length < block.size(); ++length)
        expectRefused(Bytes(block.begin(), block.begin() + length));
    expectRefused(changed(block, [](Bytes& b) { b.push_back(0); }));
    const std::size_t types[] = {56, 56 + 4 + 15 * 12, 56 + 8 + 15 * 12};
    for (std::size_t at : {0, 36, 40, 44, 48, 52}) {
        for (int bit = 0; bit < 32; ++bit)
            expectRefused(changed(block, [&](Bytes& b) { b[at + bit / 8] ^= 1 << bit % 8; }));
    }
    for (std::size_t at : types)
        expectRefused(changed(block, [&](Bytes& b) { b[at] ^= 1; }));

    // What is right passes, and whoever has no name doesn't lead beyond the 32 characters.
    const Bytes nameless = changed(block, [](Bytes& b) { std::fill_n(b.begin() + 4, 32, 'n'); });
    EXPECT_FALSE(receiver.setBuffer(nameless.data(), std::ssize(nameless)).isError());
    TransferBlock view;
    view.read(nameless.data(), {});
    EXPECT_EQ(view.header.host(), std::string(32, 'n'));
    EXPECT_EQ(blockOf(receiver), block) << "the name is that of this computer";
    PKRegionData fresh;
    fresh.setChannels(c.list);
    EXPECT_FALSE(fresh.setBuffer(block.data(), std::ssize(block)).isError());
    EXPECT_EQ(blockOf(fresh), block);
}

TEST_F(TransferBlockTest, HugeRectanglesAreRefusedBeforeMemoryIsTaken) {
    c = TestChannels();
    c.add(kChannelNone, 0);  // no bytes a pixel, so the length alone refuses nothing
    receiver.setChannels(c.list);
    const auto accepts = [&](int x0, int y0, int x1, int y1) {
        const TransferHeader header{.x0 = x0, .y0 = y0, .x1 = x1, .y1 = y1, .channelCount = 1};
        Bytes block(64);
        std::memcpy(block.data(), &header, sizeof header);
        return !receiver.setBuffer(block.data(), std::ssize(block)).isError();
    };
    EXPECT_TRUE(accepts(-1, -1, 65535, 4095)) << "2^28 pixels";
    EXPECT_FALSE(accepts(-1, -1, 65535, 4096));
    EXPECT_FALSE(accepts(0, 0, 65537, 1));
    EXPECT_FALSE(accepts(0, 0, 1, 65537));
    EXPECT_FALSE(accepts(INT_MIN, INT_MIN, INT_MAX, INT_MAX));
    EXPECT_FALSE(accepts(1, 0, 0, 1)) << "inverted";
    EXPECT_TRUE(accepts(3, 3, 3, 3)) << "empty";
}

TEST_F(TransferBlockTest, TrustedBlocksFillAsFarAsTheirChannelsGo) {
    begin(sender, 100);
    const struct {
        const char* what;
        std::size_t at;
        float first, last;  // numbers of the first channel and the last
    } cases[] = {{"another magic number", 0, 500, 515},
                 {"two channels", 52, 100, 515},
                 {"another type in the second", 56 + 4 + 15 * 12, 100, 515},
                 {"another name", 4, 100, 115}};
    for (const auto& row : cases) {
        begin(receiver, 500);
        receiver.setBuffer(changed(blockOf(sender), [&](Bytes& b) { b[row.at] ^= 1; }).data());
        const GrowTable<ChannelRecord>& records = receiver.getChannels();
        EXPECT_EQ(*reinterpret_cast<float*>(records[0].buffer->item(0)), row.first) << row.what;
        EXPECT_EQ(*reinterpret_cast<float*>(records[2].buffer->item(0)), row.last) << row.what;
    }
}

}  // namespace
