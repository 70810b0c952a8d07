#include "pelk/support/regions/pixel_readout.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "support/regions/test_channels.h"

namespace Tarnkit {
namespace {

using Values = std::vector<float>;

class PixelReadoutTest : public testing::Test {
protected:
    /// A channel whose pixels are these values, one after the other; a region is one row of them.
    int channel(int type, const Values& values, int alias = 0, int flags = 0) {
        if (region.getWidth() == 0)
            region.setRect(100, 50, 100 + 4 * std::ssize(values) / channelTypeSize(type), 51);
        const int index = region.addChannel(&c.add(type, alias, "", flags));
        region.allocateChannelBuffer(index);
        if (!values.empty())
            std::memcpy(region.getChannels()[index].buffer->item(0), values.data(),
                        values.size() * 4);
        return index;
    }
    PixelRect whole() { return {0, 0, region.getWidth(), 1, region.getWidth(), 1}; }
    /// What a read of all pixels writes, as numbers.
    Values read(int index, int format, int order = 0, int alpha = -1, int mode = 1) {
        if (format % 100 == 0)
            return readAs<u8>(index, format, order, alpha, mode);
        if (format % 100 == 1)
            return readAs<u16>(index, format, order, alpha, mode);
        return readAs<float>(index, format, order, alpha, mode);
    }
    template <class Number>
    Values readAs(int index, int format, int order, int alpha, int mode) {
        const int bytes = pixelFormatSize(format) * region.getWidth();
        std::vector<Number> out(bytes / sizeof(Number), Number(9));
        EXPECT_TRUE(region.getPixels(index, alpha, whole(), format, bytes, out.data(), order,
                                     static_cast<int>(mappers.size()), mappers.data(), mode));
        return Values(out.begin(), out.end());
    }

    TestChannels c;
    PKRegionData region;
    std::vector<ColorMapper*> mappers;
};

TEST_F(PixelReadoutTest, QuantisingCutsTheRangeIntoEqualSteps) {
    const float inf = std::numeric_limits<float>::infinity();
    const Values values{-1, 0, 0.00390624f, 0.00390625f, 0.5f, 0.999f, 1, 7, inf, -inf};
    const int index = channel(kChannelFloat, values), nan = channel(kChannelFloat, {NAN});
    EXPECT_EQ(read(index, 100), (Values{0, 0, 0, 1, 128, 255, 255, 255, 255, 0}));
    EXPECT_EQ(read(index, 101), (Values{0, 0, 255, 256, 32768, 65470, 65535, 65535, 65535, 0}));
    EXPECT_EQ(read(index, 104), values);
    EXPECT_EQ(read(nan, 100)[0], 0.0f);
}

TEST_F(PixelReadoutTest, Conversions) {
    const int colour = channel(kChannelColor, {0.25f, 0.5f, 1});
    const int value = channel(kChannelFloat, {0.75f});
    const int pair = channel(kChannelFloat2, {0.25f, -0.125f});
    const int vector = channel(kChannelVector, {-1, 0, 0.5f});
    const int covered = channel(kChannelAColor, {0.25f, 0.5f, 1, 0.5f});
    const int gray = channel(kChannelColor, {0, 0.75f, 0.75f}, 125);
    const auto raw = [&](int index, int format) { return read(index, format, 0, -1, 2); };
    const auto alphaFrom = [&](int index) { return read(colour, 300, 0, index)[3]; };
    EXPECT_EQ(read(colour, 104), (Values{1.75f * 0.33333334f})) << "colour in gray";
    EXPECT_EQ(read(colour, 200, 1), (Values{255, 128, 64})) << "blue first";
    EXPECT_EQ(read(colour, 203, 1), (Values{0.25f, 0.5f, 1})) << "floats have red first";
    EXPECT_EQ(read(pair, 104), (Values{0.0625f})) << "pair in gray";
    EXPECT_EQ(raw(pair, 200), (Values{192, 96, 0})) << "pair in bytes";
    EXPECT_EQ(read(vector, 203), (Values{0, 0.5f, 0.75f})) << "vector";
    EXPECT_EQ(raw(vector, 203), (Values{-1, 0, 0.5f})) << "raw vector";
    EXPECT_EQ(read(covered, 303, 0, gray)[3], 0.5f) << "an alpha of its own";
    EXPECT_EQ(alphaFrom(gray), 128) << "alpha from a colour's gray";
    EXPECT_EQ(alphaFrom(value), 192) << "alpha from a value";
    EXPECT_EQ(alphaFrom(pair), 255) << "a pair is no alpha";
}

TEST_F(PixelReadoutTest, IdsAreRaw) {
    const u32 ids[] = {7, 8, 0x12345700, 0xFFFFFFFF};
    const int index = channel(kChannelInt, Values(4));
    std::memcpy(region.getChannels()[index].buffer->item(0), ids, sizeof ids);
    EXPECT_EQ(read(index, 101), (Values{7, 8, 0x5700, 65535}));
    EXPECT_EQ(read(index, 104), (Values{7, 8, 0x12345700, -1}));
    u32 raw[4];
    region.getPixels(index, -1, whole(), 102, sizeof raw, raw, 0, 0, nullptr);
    EXPECT_THAT(raw, testing::ElementsAreArray(ids));
}

TEST_F(PixelReadoutTest, MappersSeeColoursOnceAndInOrder) {
    TestMapper a('a', 0.5f), b('b', 0.25f);
    mappers = {&a, nullptr, &b};
    const Values values{1, 0.5f, 0, 0, 0, 0};
    const int colour = channel(kChannelColor, values);
    EXPECT_EQ(read(colour, 303), (Values{0.125f, 0.0625f, 0, 0.125f, 0, 0, 0, 0.125f}));
    EXPECT_EQ(read(channel(kChannelColor, values, 125), 203), values) << "an alpha";
    EXPECT_EQ(read(channel(kChannelColor, values, 0, kChannelNoColorMapping), 203), values);
    EXPECT_EQ(TestMapper::log, "abab");
}

TEST_F(PixelReadoutTest, BadRequestsWriteNothing) {
    region.setRect(0, 0, 4, 3);
    channel(kChannelColor, Values(36));
    region.addChannel(&c.add(kChannelColor, 0));
    u8 out[100];
    // Whether it was answered; the bytes that were written are those of 3 x 2 pixels, or none.
    const auto reads = [&](int channel, PixelRect rect, int size) {
        std::memset(out, 9, sizeof out);
        const int result = region.getPixels(channel, -1, rect, 200, size, out, 0, 0, nullptr);
        EXPECT_EQ(std::count(out, out + 100, 9), result ? 82 : 100);
        return result == 1;
    };
    EXPECT_TRUE(reads(0, {1, 1, 4, 3, 3, 2}, 18));
    EXPECT_FALSE(reads(0, {1, 1, 4, 3, 3, 2}, 17)) << "one byte short";
    EXPECT_FALSE(reads(0, {-1, 0, 2, 3, 3, 3}, 100)) << "left of the region";
    EXPECT_FALSE(reads(0, {0, -1, 2, 2, 2, 3}, 100)) << "above the region";
    EXPECT_FALSE(reads(0, {0, 1, 4, 4, 4, 3}, 100)) << "below the region";
    EXPECT_FALSE(reads(0, {1, 0, 4, 3, 4, 3}, 100)) << "wider than its own corners";
    EXPECT_FALSE(reads(0, {0, 1, 4, 3, 4, 3}, 100)) << "higher than its own corners";
    EXPECT_FALSE(reads(0, {0, 0, 4, 3, 2147483647, 2147483647}, 100)) << "huge";
    EXPECT_FALSE(reads(0, {1, 1, 1, 3, 0, 2}, 100)) << "empty";
    EXPECT_FALSE(reads(2, {0, 0, 1, 1, 1, 1}, 100)) << "no such channel";
    EXPECT_FALSE(reads(1, {0, 0, 1, 1, 1, 1}, 100)) << "no pixels";
    region.setRect(0, 0, 5, 3);
    EXPECT_FALSE(reads(0, {0, 0, 1, 1, 1, 1}, 100)) << "larger than the pixels that there are";
}

TEST_F(PixelReadoutTest, RectanglesOfManyPagesComeOutWhole) {
    region.setRect(-3, 7, 4997, 607);  // colours take two pages, their alphas one
    channel(kChannelColor, {});
    channel(kChannelFloat, {});
    ChannelBuffer &colours = *region.getChannels()[0].buffer,
                  &alphas = *region.getChannels()[1].buffer;
    ASSERT_LT(colours.getItemsPerPage(), colours.size());
    for (int i = 0; i < colours.size(); ++i) {
        const float number = static_cast<float>(i);
        *reinterpret_cast<Color*>(colours.item(i)) = Color(number);
        *reinterpret_cast<float*>(alphas.item(i)) = number;
    }
    const PixelRect rect{1, 555, 4998, 563, 4997, 8};
    std::vector<AColor> read(rect.width * rect.height);
    const auto bytes = static_cast<std::int64_t>(read.size() * sizeof(AColor));
    ASSERT_TRUE(region.getPixels(0, 1, rect, 303, bytes, read.data(), 0, 0, nullptr));
    for (int i = 0; i < std::ssize(read); ++i) {
        const int source = (rect.y0 + i / rect.width) * 5000 + rect.x0 + i % rect.width;
        ASSERT_EQ(read[i].color, Color(static_cast<float>(source))) << i;
        ASSERT_FLOAT_EQ(read[i].alpha, static_cast<float>(source)) << i;
    }
}

}  // namespace
}  // namespace Tarnkit
