#include "pelk/support/regions/fragments.h"

#include <gmock/gmock.h>

#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

using Values = std::vector<float>;

class FragmentTest : public testing::Test {
protected:
    void begin() {
        region.setRect(10, 20, 14, 22);
        region.setChannels(c.list);
        region.beginRendering();
    }
    PKFragment& make() { return static_cast<PKFragment&>(*region.newFragment()); }
    /// A fragment in which every main value has its own number, from `n` on.
    PKFragment& numbered(float n) {
        PKFragment& f = make();
        Color* colors[] = {&f.color, &f.alpha, &f.background, &f.transparency,
                           &f.alphaTransparency};
        for (int i = 0; i < 5; ++i)
            *colors[i] = Color(n + i);
        f.normal.x = n + 5;
        f.zDepth = n + 6;
        f.weight = n + 7;
        f.renderID = static_cast<int>(n + 8);
        return f;
    }
    /// The main values, in the same order; of colours the blue.
    static Values values(const PKFragment& f) {
        const float id = static_cast<float>(f.renderID), through = f.transparency.b;
        return {f.color.b,  f.alpha.b, f.background.b, through, f.alphaTransparency.b,
                f.normal.x, f.zDepth,  f.weight,       id};
    }
    float* slots(PKFragment& f) { return reinterpret_cast<float*>(f.channelData); }

    TestChannels c;
    PKRegionData region;
};

TEST_F(FragmentTest, AddSumsWeightedSamples) {
    c.add(kChannelFloat, 1);
    begin();
    PKFragment &sum = make(), &a = numbered(10);
    *slots(a) = 3.0f;
    sum.addFragment(&a, Color(2, 2, 5), 0);
    EXPECT_EQ(sum.color, Color(20, 20, 50));
    EXPECT_EQ(values(sum), (Values{50, 55, 60, 65, 70, 45, 48, 51, 18}));
    EXPECT_EQ(sum.state, 1);
    EXPECT_EQ(*slots(sum), 106.0f);
    sum.addFragment(&numbered(100), Color(1), 0);
    EXPECT_EQ(values(sum), (Values{150, 156, 162, 168, 174, 150, 154, 158, 18}));
    EXPECT_THAT(c.owned[0]->added, testing::ElementsAre(0, 1));
    sum.color = Color(2);
    sum.multiply(sum.color, 0);  // the weights are a field of its own
    EXPECT_EQ(values(sum), (Values{4, 312, 324, 336, 348, 300, 308, 316, 18}));
}

TEST_F(FragmentTest, AddBehindComposites) {
    for (int mode : {1, 2}) {
        PKFragment& front = make();
        front.clear(mode);
        front.transparency = Color(0.5f);
        for (float n : {10.0f, 100.0f})  // weights count in sums alone
            front.addFragment(&numbered(n), Color(9), mode);
        Values expected{5 + 650, 11 + 14 * 101, 6 + 6.5f * 102, 6.5f * 103, 14 * 104, 0, -1e18f, 1,
                        -1};
        if (mode == 1)  // the first one gives the rest
            std::copy_n(Values{15, 16, 17, 18}.begin(), 4, expected.begin() + 5);
        EXPECT_EQ(values(front), expected);
    }
}

TEST_F(FragmentTest, AliasesReachTheFieldAndEveryChannel) {
    for (int alias : {5, 102, 102, 200, 300})  // the last two share a bucket, with 300 ahead
        c.add(kChannelFloat, alias);
    begin();
    PKFragment& f = make();
    const auto slotsAfter = [&](int alias) {
        const Color value(7);
        f.clear(0);
        std::fill_n(slots(f), 5, 0.0f);
        f.addAlias(alias, &value);
        return Values(slots(f), slots(f) + 5);
    };
    EXPECT_EQ(slotsAfter(5), (Values{7, 0, 0, 0, 0}));
    EXPECT_EQ(values(f), (Values{0, 0, 0, 0, 0, 0, 7, 0, -1})) << "the depth alone";
    EXPECT_EQ(slotsAfter(102), (Values{0, 7, 7, 0, 0}));
    EXPECT_EQ(slotsAfter(200), (Values{0, 0, 0, 7, 0}));
    EXPECT_EQ(slotsAfter(301), Values(5)) << "nobody's";
    EXPECT_EQ(f.getAliasPtr(200), nullptr) << "of a bucket the address is the first one's alone";
    EXPECT_TRUE(f.isClear(0));
    EXPECT_EQ(f.getAliasPtr(300), slots(f) + 4);
    EXPECT_FALSE(f.isClear(0));
}

TEST_F(FragmentTest, ChannelsByIndex) {
    c.add(kChannelFloat, 5);
    c.add(kChannelColor, 50);
    begin();
    TestChannel late(kChannelAColor, 102);  // until the next start no block has room for it
    region.addChannel(&late);
    PKFragment& f = make();
    const Color value(3, 4, 5);
    for (int index : {-1, 2, 3}) {
        f.setChannel(index, &value);
        EXPECT_EQ(f.getChannelPtr(index), nullptr);
    }
    f.setChannel(0, &value);
    EXPECT_EQ(f.zDepth, 3.0f);
    EXPECT_EQ(slots(f)[0], 100.0f) << "the main value has it, not the slot";
}

TEST_F(FragmentTest, ColorMapper) {
    c.add(kChannelColor, 50);
    begin();
    TestMapper mapper(' ', 1.0f);
    PKFragment& f = make();
    f.color = Color(2);
    f.background = Color(3);
    f.transparency = Color(0.75f);
    f.applyColorMapper(&mapper, 1);
    EXPECT_EQ(*slots(f), 1.0f) << "of the channel";
    EXPECT_EQ(f.color, Color(2.0f + 0.25f)) << "as much as is covered";
    EXPECT_EQ(f.background, Color(3.0f + 0.75f)) << "as much as shines through";
    f.applyColorMapper(&mapper, 0);
    EXPECT_EQ(f.color, Color(2.25f + 3.75f + 1.0f)) << "both together";
    EXPECT_EQ(f.background, Color(0));
}

TEST_F(FragmentTest, FinishedPixelIsMadeOfFrontAndTotal) {
    TestChannel& channel = c.add(kChannelColor, 1);
    TestChannel& elsewhere = c.add(kChannelColor, 1, "", kChannelNoBuffer);
    begin();
    using Chosen = std::pair<int, int>;  // front and total, as numbers of the samples; -1 is none
    // Each sample is its tag, weight and depth.
    const auto choose = [&](bool byDepth, const std::vector<std::array<float, 3>>& samples) {
        region.frontByDepth = byDepth;
        FragmentList list{&region, nullptr};
        for (int i = static_cast<int>(samples.size()); i-- > 0;) {
            auto& f = static_cast<PKFragment&>(*list.addFront(static_cast<int>(samples[i][0])));
            f.weight = samples[i][1];
            f.zDepth = samples[i][2];
            f.renderID = i;
        }
        for (int x : {9, 13, 14})  // the first and the last stand outside
            region.storeFragments(x, 21, list);
        const auto number = [](Fragment* f) {
            return f ? static_cast<PKFragment*>(f)->renderID : -1;
        };
        const TestChannel::Stored& pixel = channel.stored.back();
        return Chosen(number(pixel.front), number(pixel.total));
    };
    EXPECT_EQ(choose(false, {{0, 1, 0}, {1, 3, 0}, {2, 3, 0}}), Chosen(1, 0)) << "the heaviest";
    EXPECT_EQ(choose(false, {{0, 1, 0}, {-2, -1e30f, 0}}), Chosen(0, 1)) << "a total of its own";
    EXPECT_EQ(choose(false, {{-3, 5, 0}}), Chosen(-1, 0)) << "one that is never front";
    EXPECT_EQ(choose(true, {{0, 1, 5}, {1, 2, 12}, {-1, 1, 7}}), Chosen(2, 0)) << "the deepest";
    EXPECT_EQ(choose(true, {{-4, 1, 9}, {0, 1, 5}}), Chosen(1, 0)) << "tags below -1";
    ASSERT_EQ(channel.stored.size() + elsewhere.stored.size(), 10u) << "outside of the rectangle";
    EXPECT_EQ(channel.stored[0].pixel, region.getChannels()[0].buffer->item(3 + 1 * 4));
    EXPECT_EQ(elsewhere.stored[0].pixel, nullptr);
    EXPECT_EQ(elsewhere.stored[0].index, 1);
}

}  // namespace
