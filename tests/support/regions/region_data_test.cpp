#include "pelk/support/regions/region_data.h"

#include <gmock/gmock.h>

#include <climits>

#include "base/test_heap.h"
#include "pelk/base/exception_msg.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

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
        {40200, 12, 33554432, 200, 482400, "more than four times the page"},
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

    TestChannels c;
    PKRegionData region;
};

TEST_F(RegionDataTest, SyncKeepsWhatFits) {
    // The names behind a sync, of those without their pixels in capitals.
    const auto sync = [&](const char* before, const char* wanted, int result = 0) {
        SCOPED_TRACE(std::string(before) + " to " + wanted);
        c = named(before);
        begin(2, 2);
        for (int i = 0; i < region.getNumChannels(); ++i)
            pixel(i, 3) = 77;
        TestChannels list = named(wanted);
        EXPECT_EQ(region.syncChannels(list.list), result);
        std::string names;
        for (int i = 0; i < region.getNumChannels(); ++i) {
            const int letter = record(i).name[0];
            names += static_cast<char>(pixel(i, 3) == 77 ? letter : std::toupper(letter));
            EXPECT_TRUE(result || record(i).channel == list.list[i]) << "an old object";
        }
        return names;
    };
    EXPECT_EQ(sync("abcd", "abdc"), "abdc");
    EXPECT_EQ(sync("abcd", "abed"), "abEd");
    EXPECT_EQ(sync("abcc", "abccc"), "abccC");
    // d and c are looked for from the third name on, so they go, and come back without pixels.
    EXPECT_EQ(sync("abcd", "dcxy", 1), "abYXCD");
}

TEST_F(RegionDataTest, PixelsStartFilledAndAreClearedInTheRectangle) {
    c.add(kChannelColor, 1, "a");
    c.add(kChannelColor, 1, "elsewhere", kChannelNoBuffer);
    begin(8, 4);
    EXPECT_EQ(pixel(0, 31), 0.25f);
    EXPECT_EQ(record(1).buffer, nullptr);
    region.setRect(0, 0, 4, 2);
    c.owned[0]->start = 0.5f;
    region.clear();
    EXPECT_EQ(pixel(0, 7), 0.5f);
    EXPECT_EQ(pixel(0, 8), 0.25f) << "not of this rectangle";
}

TEST_F(RegionDataTest, RegionsOfHugeSizeAreRefusedAndNoHarm) {
    DebugRecorder quiet;
    c = named("a");
    region.setChannels(c.list);
    // A row longer than a page can be, and more pixels than an int.
    for (const auto& [width, height] : {std::pair{INT_MAX / 2, 1}, {INT_MAX, 2}}) {
        region.setRect(-1, 0, width, height);
        EXPECT_THROW(region.beginRendering(), ExceptionMsg);
        region.clear();
    }
    begin(2, 2);
    EXPECT_EQ(pixel(0, 3), 0.25f) << "not usable any more";
    region.setRect(0, 0, 3, 3);  // larger than its pixels
    region.storeFragments(2, 2, nullptr, region.newFragment());
    EXPECT_TRUE(c.owned[0]->stored.empty());
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
        tried.setChannels(c.list);
        const auto start = [&] {
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
        EXPECT_TRUE(tried.getChannels()[0].buffer) << "pixels are made from the last channel on";
    }
}

TEST_F(RegionDataTest, FragmentsShareNoBlockAndReuseTakesNoMemory) {
    c = named(std::string(100, 'a'));
    begin(32, 32);
    float* slots[2500];
    const auto use = [&] {
        region.beginRendering();
        FragmentList list{&region, nullptr};
        for (int i = 0; i < 2500; ++i) {
            slots[i] = static_cast<float*>(list.addFront(i)->getChannelPtr(99));
            *slots[i] = static_cast<float>(i);
        }
        for (int i = 0; i < 2500; ++i)
            EXPECT_EQ(*slots[i], i) << "two share a block";
        region.storeFragments(10, 20, list);
        list.deleteAll();
        region.clear();
    };
    use();
    TestHeap heap;
    use();
    EXPECT_EQ(TestHeap::state.taken, 0);
    Fragment* const twice = region.newFragment();
    for (Fragment* fragment : {twice, twice, static_cast<Fragment*>(nullptr)})
        region.deleteFragment(fragment);
    EXPECT_NE(region.newFragment(), region.newFragment()) << "given back twice";
}

}  // namespace
