#include "support/fragments.h"

#include <gmock/gmock.h>

#include <set>

#include "support/test_channels.h"

namespace Tarnkit {
namespace {

/// Adds 1 to every colour.
struct AddOne : ColorMapper {
    explicit AddOne(int background) : withBackground(background) {}
    void mapColor(Color& out, const Color& in) override { out = in + Color(1.0f); }
    void mapPixel(Color&, Color&, int) override {}
    void beginMapping(int) override {}
    void endMapping(int) override {}
    int mapsBackground() override { return withBackground; }
    int withBackground;
};

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

TEST_F(FragmentTest, BlocksAreReusedAndNeverShared) {
    EXPECT_EQ(make().channelData, nullptr) << "the size is not known yet";
    region.resetFragments();
    begin();
    EXPECT_EQ(region.getFragmentDataSize(), 0);
    std::set<void*> blocks;
    for (int round = 0; round < 2; ++round) {
        std::vector<PKFragment*> out;
        for (int i = 0; i < 2500; ++i) {
            out.push_back(&make());
            std::fill_n(slots(*out[i]), 2, static_cast<float>(i));
            blocks.insert(out[i]->channelData);
        }
        for (int i = 0; i < 2500; ++i)
            EXPECT_EQ(slots(*out[i])[0] + slots(*out[i])[1], 2.0f * i) << "two share a block";
        region.resetFragments();
    }
    EXPECT_EQ(blocks.size(), 2500u) << "the second round took fresh blocks";
    PKFragment &a = make(), &b = make();
    PKRegionData other;
    other.deleteFragment(&b);
    for (PKFragment* fragment : {&a, &a, static_cast<PKFragment*>(nullptr)})
        region.deleteFragment(fragment);
    EXPECT_EQ(region.getNumFragments(), 1);
    EXPECT_EQ(&make(), &a) << "the last one back is the next out";
    EXPECT_NE(&make(), &a) << "given back twice";
}

TEST_F(FragmentTest, ClearByMode) {
    c.add(kChannelColor, 1);
    begin();
    for (int mode : {0, 1, 2, 7}) {
        SCOPED_TRACE(mode);
        PKFragment& f = numbered(3);
        f.state = 1;
        f.clear(mode);
        const float through = mode ? 1 : 0, depth = mode ? -1e18f : 0;
        EXPECT_EQ(values(f), (Values{0, 0, 0, through, through, 0, depth, through, -1}));
        EXPECT_EQ(f.state & 7, mode == 7 ? 0 : mode * 2 + 2);
        EXPECT_EQ(f.isClear(mode), mode != 7);
        EXPECT_EQ(slots(f)[2], 100.0f + mode);
        slots(f)[2] = 5.0f;
        f.clear(mode);
        EXPECT_EQ(slots(f)[2], mode == 7 ? 107.0f : 5.0f) << "data of a clear fragment";
    }
    EXPECT_THAT(c.owned[0]->clears, testing::ElementsAre(0, 1, 2, 7, 7)) << "3 for the templates";
}

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

TEST_F(FragmentTest, FixedAliasesReachTheFields) {
    begin();
    PKFragment& f = make();
    void* const fields[] = {&f.color,    &f.alpha,  &f.transparency,      &f.background, &f.zDepth,
                            &f.renderID, &f.normal, &f.alphaTransparency, nullptr,       &f.weight};
    for (int alias = 1; alias <= 10; ++alias) {
        SCOPED_TRACE(alias);
        const bool isNumber = alias == 5 || alias == 6 || alias == 10;
        const Color in(1, 2, 3), old(-1.0f);
        Color out = old;
        f.addAlias(alias, &in);
        f.getAlias(alias, &out);
        EXPECT_EQ(out, alias == 9 ? old : isNumber ? Color(1, -1, -1) : in);
        EXPECT_EQ(f.getAliasPtr(alias), fields[alias - 1]);
    }
    EXPECT_TRUE(f.isClear(0)) << "no channel was written, nor was the address a slot's";
}

TEST_F(FragmentTest, AliasesReachEveryChannelThatHasThem) {
    for (int alias : {1, 102, 102, 200, 300})  // the last two share a bucket, with 300 ahead
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
    EXPECT_EQ(slotsAfter(1), (Values{7, 0, 0, 0, 0})) << "beside the field";
    EXPECT_EQ(slotsAfter(102), (Values{0, 7, 7, 0, 0}));
    EXPECT_EQ(slotsAfter(200), (Values{0, 0, 0, 7, 0}));
    EXPECT_EQ(slotsAfter(300), (Values{0, 0, 0, 0, 7}));
    EXPECT_FALSE(f.isClear(0));
    for (int unknown : {50, 301})
        EXPECT_EQ(slotsAfter(unknown), Values(5));
    for (int without : {50, 200, 301})  // of a bucket the address is the first one's alone
        EXPECT_EQ(f.getAliasPtr(without), nullptr);
    EXPECT_TRUE(f.isClear(0));
    EXPECT_EQ(f.getAliasPtr(102), slots(f) + 2);
    EXPECT_FALSE(f.isClear(0));
    EXPECT_EQ(f.getAliasPtr(300), slots(f) + 4);
}

TEST_F(FragmentTest, ChannelsByIndex) {
    c.add(kChannelFloat, 5);
    c.add(kChannelColor, 50);
    c.add(kChannelColor, 51, "", kChannelNoFragmentData);
    begin();
    PKFragment& f = make();
    const Color value(3, 4, 5);
    for (int index : {-1, 2, 3})
        EXPECT_EQ(f.getChannelPtr(index), nullptr);
    f.setChannel(3, &value);
    EXPECT_TRUE(f.isClear(0));
    f.setChannel(0, &value);
    EXPECT_EQ(f.zDepth, 3.0f);
    EXPECT_EQ(slots(f)[0], 100.0f) << "the main value has it, not the slot";
    EXPECT_FALSE(f.isClear(0));
    f.clear(0);
    EXPECT_EQ(f.getChannelPtr(1), slots(f) + 1);
    Color out;
    f.setChannel(1, &value);
    f.getChannel(1, &out);
    EXPECT_EQ(out, value);
}

TEST_F(FragmentTest, ChannelsWithoutRoomOrObjectArePassedOver) {
    TestChannel& first = c.add(kChannelFloat, 1);
    begin();
    TestChannel late(kChannelAColor, 102);  // until the next start no block has room for it
    region.addChannel(&late);
    PKFragment &f = make(), &g = make(), unowned;
    const auto useAll = [&](PKFragment& used) {
        used.addFragment(&g, Color(1), 0);
        used.multiply(Color(1), 0);
        used.clear(9);
        used.setChannel(1, &g.color);
        used.addAlias(102, &g.color);
        EXPECT_EQ(used.getChannelPtr(1), nullptr);
        return first.added.size() + late.added.size() + late.clears.size();
    };
    EXPECT_EQ(useAll(f), 1u);
    EXPECT_EQ(useAll(unowned), 1u);
    region.detachChannels();
    EXPECT_EQ(useAll(f), 1u);
}

TEST_F(FragmentTest, ColorMapper) {
    c.add(kChannelColor, 50);
    begin();
    const auto expectMapped = [&](int withBackground, int mode, float transparency, float color,
                                  float background) {
        SCOPED_TRACE(transparency);
        AddOne mapper(withBackground);
        PKFragment& f = make();
        f.color = Color(2);
        f.background = Color(3);
        f.transparency = Color(transparency);
        f.applyColorMapper(&mapper, mode);
        EXPECT_EQ(*slots(f), 1.0f);
        f.applyColorMapper(nullptr, mode);
        EXPECT_EQ(*slots(f), -1.0f) << "channels get a null mapper too";
        EXPECT_EQ(f.color, Color(color));
        EXPECT_EQ(f.background, Color(background));
    };
    expectMapped(0, 0, 1.5f, 2.0f + 1.0f, 3.0f);  // nothing covered: as it is
    expectMapped(1, 1, 0.75f, 2.0f + 0.25f, 3.0f + 0.75f);
    expectMapped(1, 1, -1.0f, 2.0f + 1.0f, 3.0f + 1.0f);  // nothing shines through
    expectMapped(1, 0, 0.25f, 6.0f, 0.0f);                // both together

    PKFragment& f = numbered(3);
    f.alpha = Color(0.25f, 0.5f, 0.75f);
    *reinterpret_cast<Color*>(slots(f)) = Color(-1, 6, -1);
    AColor sample;
    EXPECT_EQ(f.getSampleColor(&sample)->color, Color(3 + 5)) << "colour and background";
    EXPECT_FLOAT_EQ(sample.alpha, 0.5f + 6.0f) << "channels count as coverage";
}

TEST_F(FragmentTest, FinishedPixelIsMadeOfFrontAndTotal) {
    TestChannel& channel = c.add(kChannelColor, 1);
    begin();
    struct Sample {
        int tag;
        float weight, depth;
    };
    const struct {
        int byDepth;
        std::vector<Sample> samples;
        int front, total;  // of the samples; -1 is none
        const char* what;
    } cases[] = {
        {0, {}, -1, -1, "nothing"},
        {0, {{0, 1, 0}, {1, 3, 0}, {2, 3, 0}}, 1, 0, "the heaviest, the first of equals"},
        {0, {{0, 1, 0}, {-2, -1e30f, 0}}, 0, 1, "a light total counts too"},
        {0, {{-3, 5, 0}}, -1, 0, "only one that is never front"},
        {0, {{0, 1, 0}, {-4, 2, 0}}, 1, 0, "other negative tags may be front"},
        {1, {{0, 1, 5}, {1, 2, 20}, {-1, 1, 7}}, 1, 0, "the deepest by its weight"},
        {1, {{-4, 1, 9}, {0, 1, 5}}, 1, 0, "tags below -1 are no front"},
        {1, {{0, 0, 0}, {-2, 0, 0}}, -1, 1, "0/0 is no depth"},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.what);
        channel.stored.clear();
        region.frontByDepth = k.byDepth;
        FragmentList list{&region, nullptr};
        PKFragment* made[3];
        for (int i = static_cast<int>(k.samples.size()); i-- > 0;) {
            made[i] = static_cast<PKFragment*>(list.addFront(k.samples[i].tag));
            made[i]->weight = k.samples[i].weight;
            made[i]->zDepth = k.samples[i].depth;
        }
        region.storeFragments(11, 21, list);
        ASSERT_EQ(channel.stored.empty(), k.total < 0);
        for (const TestChannel::Stored& pixel : channel.stored) {
            EXPECT_EQ(pixel.total, made[k.total]);
            EXPECT_EQ(pixel.front, k.front < 0 ? nullptr : made[k.front]);
            EXPECT_EQ(pixel.weight, k.front < 0 ? 0.0f : made[k.front]->weight);
        }
    }
}

TEST_F(FragmentTest, PixelReachesEveryChannelThatWantsIt) {
    TestChannel& here = c.add(kChannelColor, 1);
    TestChannel& elsewhere = c.add(kChannelColor, 1, "", kChannelNoBuffer);
    begin();
    TestChannel late(kChannelColor, 1);  // too late for a buffer
    region.addChannel(&late);
    for (int x : {9, 13, 14})
        region.storeFragments(x, 21, nullptr, region.newFragment());
    ASSERT_EQ(here.stored.size() + elsewhere.stored.size(), 2u) << "outside of the rectangle";
    EXPECT_EQ(here.stored[0].pixel, region.getChannels()[0].buffer->item(3 + 1 * 4));
    EXPECT_EQ(elsewhere.stored[0].pixel, nullptr);
    EXPECT_EQ(elsewhere.stored[0].index, 1);
    EXPECT_TRUE(late.stored.empty());
}

TEST_F(FragmentTest, Comparison) {
    const Vector up(0, 0, 1), tilted(0, 0.8f, 0.6f);
    // Tests the id, the normal or the depth of two fragments that differ in all three.
    const auto differ = [&](char test, Vector normal, float weight) {
        region.compareRenderID = test == 'i';
        region.compareNormal = test == 'n';
        region.compareZ = test == 'z';
        FragmentList a{&region, nullptr}, b{&region, nullptr};
        auto& total = static_cast<PKFragment&>(*a.getFragment(kTagTotal));
        total.normal = normal;
        total.zDepth = 10.5f;
        total.renderID = 4;
        static_cast<PKFragment&>(*b.getFragment(kTagTotal)).normal = up;
        const int result = region.compareFragments(a, 0, b, 0, weight);
        EXPECT_EQ(region.compareFragments(b, 0, a, 0, weight), result);
        return result;
    };
    EXPECT_EQ(differ('i', up, 1), 1);
    EXPECT_EQ(differ('z', up, 1), 1);
    EXPECT_EQ(differ('n', tilted, 1), 1) << "0.01 < 1 * 0.4 * 0.4";
    EXPECT_EQ(differ('n', tilted, 0.05f), 0) << "0.01 > 0.05 * 0.4 * 0.4";
    EXPECT_EQ(differ('n', -up, 0.0099f), 0) << "opposite ones count as square";
    EXPECT_EQ(differ('n', Vector(), 1), 0) << "a zero one passes";
}

TEST_F(FragmentTest, ListFindsAndAppends) {
    FragmentList list{&region, nullptr}, other{&region, nullptr};
    bool found = true;
    Fragment* five = list.getFragment(5, &found);
    EXPECT_FALSE(found);
    EXPECT_EQ(list.addFront(4)->nextFragment, five);
    EXPECT_EQ(list.getFragment(5, &found), five);
    EXPECT_TRUE(found);
    static_cast<PKFragment*>(other.getFragment(5))->color = Color(8);
    other.getFragment(6);
    list.merge(other, 0.5f);
    list.multiplyAll(3);
    EXPECT_EQ(static_cast<PKFragment*>(five)->color, Color(12));
    EXPECT_EQ(five->nextFragment->getTag(), 6);
    list.deleteAll();
    other.end();
    EXPECT_EQ(region.getNumFragments(), 0);
}

}  // namespace
}  // namespace Tarnkit
