#include "support/region_data.h"

#include <gmock/gmock.h>

#include <climits>
#include <random>

#include "frame/exception_msg.h"
#include "frame/test_heap.h"
#include "support/test_channels.h"

namespace Tarnkit {
namespace {

TEST(ChannelBufferTest, PagesHoldWholeRowsAndSimilarOnesStay) {
    const struct {
        int count, itemSize, pageBytes, rowWidth, expectedBytes;
        const char* what;
    } cases[] = {
        {5000 * 600, 12, 33554432, 5000, 559 * 60000, "559 rows of 60,000 bytes"},
        {200, 4, 100, 50, 200, "a row larger than a page makes the page"},
        {1, 12, 1000, 1, 60, "below 65 there are 64, less a remainder"},
        {0, 100, 1000, 1, 100, "an item above 64 bytes"},
        {10000, 12, 33554432, 100, 120000, "all fits"},
        // From here on the pages of the case before may stay.
        {2500, 12, 33554432, 50, 120000, "exactly a quarter of the page"},
        {40000, 12, 33554432, 200, 120000, "exactly four times the page"},
        {40200, 12, 33554432, 200, 482400, "more than four times the page"},
        {40200, 12, 33554432, 201, 482400, "another width"},
        {40200, 16, 33554432, 200, 643200, "another item size"},
        {12000, 16, 33554432, 170, 192000, "no whole rows"},
    };
    ChannelBuffer buffer;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        buffer.resize(c.count, c.itemSize, c.pageBytes, c.rowWidth);
        EXPECT_EQ(buffer.getPageBytes(), c.expectedBytes);
        EXPECT_GE(buffer.size(), c.count);
        EXPECT_EQ(buffer.item(buffer.size()), nullptr);
    }
}

class RegionDataTest : public testing::Test {
protected:
    static TestChannels named(const std::string& letters) {
        TestChannels made;
        for (char letter : letters)
            made.add(kChannelColor, 0, std::string(1, letter));
        return made;
    }
    const ChannelRecord& record(int index) { return region.getChannels()[index]; }
    float& pixel(int channel, int index) {
        return *reinterpret_cast<float*>(record(channel).buffer->item(index));
    }
    void begin(int width, int height) {
        region.setRect(10, 20, 10 + width, 20 + height);
        region.setChannels(c.list);
        region.beginRendering();
    }
    /// The channels in a bucket of aliases, in its order.
    std::vector<int> inBucket(int bucket) {
        std::vector<int> found;
        for (AliasNode* node = region.getAliasBuckets()[bucket]; node; node = node->next)
            found.push_back(node->channelIndex);
        return found;
    }

    TestChannels c;
    PKRegionData region;
};

TEST_F(RegionDataTest, ChannelIsDescribedByItsObject) {
    c.add(kChannelColor, 7, std::string(80, 'n'));
    c.add(kChannelVector, 7, "flat", kChannelNoFragmentData);
    c.add(kChannelFloat, 5, "null");
    region.setChannels(c.list);
    EXPECT_EQ(region.addChannel(nullptr), -1);
    EXPECT_EQ(record(0).name, std::string(63, 'n'));
    EXPECT_EQ(record(2).fragmentOffset, 12) << "a channel without a slot moved the next one";
    EXPECT_EQ(region.findChannelByAlias(7), 1) << "the last one is found";
    EXPECT_EQ(region.findChannelByName(c.owned[0]->name.c_str()), 0) << "names count to 63";
    EXPECT_EQ(region.findChannelByName(nullptr), -1);
}

TEST_F(RegionDataTest, SyncKeepsWhatFits) {
    // The names behind a sync, and how many channels kept their pixels.
    using Kept = std::pair<std::string, int>;
    const auto sync = [&](const char* before, const char* wanted, int result = 0) {
        SCOPED_TRACE(std::string(before) + " to " + wanted);
        c = named(before);
        begin(2, 2);
        for (int i = 0; i < region.getNumChannels(); ++i)
            pixel(i, 3) = 77;
        TestChannels list = named(wanted);
        EXPECT_EQ(region.syncChannels(list.list), result);
        Kept kept;
        for (int i = 0; i < region.getNumChannels(); ++i) {
            kept.first += record(i).name;
            kept.second += pixel(i, 3) == 77;
            EXPECT_TRUE(result || record(i).channel == list.list[i]) << "an old object";
        }
        region.detachChannels();  // some objects are gone
        region.beginRendering();
        EXPECT_EQ(region.getFragmentDataSize(), 12 * region.getNumChannels());
        return kept;
    };
    EXPECT_EQ(sync("", "ab"), Kept("ab", 0));
    EXPECT_EQ(sync("abcd", "abdc"), Kept("abdc", 4));
    EXPECT_EQ(sync("abcd", "abed"), Kept("abed", 3));
    EXPECT_EQ(sync("abcc", "abccc"), Kept("abccc", 4));
    EXPECT_EQ(sync("abcd", "xy", 1), Kept("ab", 2));
    // d and c are looked for from the third name on, so they go, and come back without pixels.
    EXPECT_EQ(sync("abcd", "dcxy", 1), Kept("abyxcd", 2));
}

TEST_F(RegionDataTest, MatchLooksAtNamesTypesAndTwoFlags) {
    for (int i = 0; i < 100; ++i)
        c.add(kChannelFloat, i, std::to_string(i / 2));  // every name twice
    region.setChannels(c.list);
    std::shuffle(c.list.begin(), c.list.end(), std::mt19937(7));
    EXPECT_EQ(region.reorderChannels(c.list), 0);
    EXPECT_EQ(region.channelsMatch(c.list), 1);
    EXPECT_EQ(region.channelsMatch({c.list.data(), 99}), 0);
    for (int flag = 1; flag <= 32; flag *= 2) {
        c.owned[50]->flags = flag;
        EXPECT_EQ(region.syncChannels(c.list), flag == 2 || flag == 16) << flag;
    }
    c.owned[50]->type = kChannelInt;
    EXPECT_EQ(region.syncChannels(c.list), 1);
}

TEST_F(RegionDataTest, RemovedChannelLeavesForeignBucketsAlone) {
    for (int alias : {200, 7, 146, 147, 7, 0, 50})
        c.add(kChannelFloat, alias);
    c.add(kChannelFloat, 7, "", kChannelNoFragmentData);  // without a slot it needs no node
    begin(1, 1);
    const std::vector<int> shared{5, 3, 0};  // all outside of 1 to 146, from the last to the first
    EXPECT_EQ(inBucket(0), shared);
    EXPECT_EQ(inBucket(7), (std::vector{4, 1}));
    region.removeChannel(99);
    region.removeChannel(0);
    EXPECT_EQ(inBucket(0), shared);
    region.removeChannel(0);
    EXPECT_EQ(inBucket(7), std::vector<int>());
    // The node of 50 says an index that is no more; nothing is found by it until the next start.
    EXPECT_EQ(region.newFragment()->getAliasPtr(50), nullptr);
    region.resetFragments();
    region.beginRendering();
    Fragment* fragment = region.newFragment();
    EXPECT_EQ(fragment->getAliasPtr(50), fragment->getChannelPtr(4));
}

TEST_F(RegionDataTest, PixelsStartFilledAndLargeEnoughOnesStay) {
    c.add(kChannelColor, 1, "a");
    c.add(kChannelColor, 1, "elsewhere", kChannelNoBuffer);
    c.add(kChannelNone, 1, "of no type");
    begin(8, 4);
    EXPECT_EQ(pixel(0, 31), 0.25f);
    for (int without : {1, 2})
        EXPECT_EQ(record(without).buffer, nullptr);
    region.setRect(0, 0, 4, 2);
    c.owned[0]->start = 0.5f;
    region.beginRendering();
    EXPECT_EQ(pixel(0, 0), 0.25f);
    region.clear();
    EXPECT_EQ(pixel(0, 7), 0.5f);
    EXPECT_EQ(pixel(0, 8), 0.25f) << "not of this rectangle";
    region.detachChannels();
    region.setRect(0, 0, 8, 5);
    region.beginRendering();
    EXPECT_EQ(pixel(0, 39), 0.0f);
    region.frontByDepth = 1;
    region.reset();
    EXPECT_EQ(record(0).buffer, nullptr);
    EXPECT_EQ(region.getTemplateSize() + region.getWidth() + region.frontByDepth, 0);
}

TEST_F(RegionDataTest, RegionsOfNoAndOfHugeSizeAreHarmless) {
    DebugRecorder quiet;
    TestChannel& channel = c.add(kChannelColor, 1, "a");
    const auto expectHarmless = [&](const char* what, int x0, int y0, int x1, int y1) {
        SCOPED_TRACE(what);
        begin(0, 0);
        region.setRect(x0, y0, x1, y1);
        if (x1 > 1000)
            EXPECT_THROW(region.beginRendering(), ExceptionMsg);
        else
            region.beginRendering();
        region.storeFragments(x0, y0, nullptr, region.newFragment());
        region.clear();
        begin(2, 2);
        EXPECT_EQ(pixel(0, 3), 0.25f) << "not usable any more";
        region.setRect(0, 0, 3, 3);  // larger than its pixels
        region.storeFragments(2, 2, nullptr, region.newFragment());
        EXPECT_TRUE(channel.stored.empty());
    };
    expectHarmless("two negative sides make no area", 10, 10, 0, 0);
    expectHarmless("2^40 pixels", 0, 0, 1 << 20, 1 << 20);
    expectHarmless("a side longer than an int", INT_MIN, 0, INT_MAX, 2);
    expectHarmless("a row longer than a page can be", 0, 0, INT_MAX / 2, 1);
    region.setNumChannels(-1);
    EXPECT_THROW(region.setNumChannels(INT_MAX), ExceptionMsg);
    EXPECT_EQ(region.getNumChannels(), 0);
}

TEST_F(RegionDataTest, RefusedMemoryAnywhereLeavesTheRegionUsable) {
    DebugRecorder quiet;
    c = named("abc");
    bool refused = true;
    for (int granted = 0; refused; ++granted) {
        ASSERT_LT(granted, 100);
        TestHeap heap;
        PKRegionData tried;
        tried.setRect(0, 0, 4, 4);
        const auto start = [&] {
            tried.setChannels(c.list);
            tried.beginRendering();
            return *static_cast<float*>(tried.newFragment()->getChannelPtr(2));
        };
        TestHeap::refuseAfter(granted);
        try {
            start();
            refused = false;
        } catch (const ExceptionMsg&) {
        }
        TestHeap::refuseNothing();
        EXPECT_EQ(start(), 100.0f);
        EXPECT_TRUE(tried.getChannels()[2].buffer);
    }
}

TEST_F(RegionDataTest, ReuseTakesNoMemory) {
    c = named(std::string(100, 'a'));
    begin(32, 32);
    const auto use = [&] {
        region.beginRendering();
        FragmentList list{&region, nullptr};
        for (int i = 0; i < 2500; ++i)
            list.addFront(i)->clear(1);
        list.head()->addFragment(list.head()->nextFragment, Color(1.0f), 0);
        region.storeFragments(10, 20, list);
        list.deleteAll();
        region.clear();
    };
    use();
    TestHeap heap;
    use();
    EXPECT_EQ(TestHeap::state.taken, 0);
}

}  // namespace
}  // namespace Tarnkit
