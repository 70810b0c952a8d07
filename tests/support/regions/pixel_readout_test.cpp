#include "pelk/support/regions/pixel_readout.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

using Values = std::vector<float>;

class PixelReadoutTest : public testing::Test {
protected:
    /// A channel whose pixels are these values, one after the other; a region is
    /// one row of them.
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

float gray(const Values& color) {
    return (color[0] + color[1] + color[2]) * 0.33333334f;
}

/// What a pixel reads as, by the definition and one number after the other.
/// `p`: the floats of its channel.
Values slowRead(int type, const float* p, float alpha, int format, bool blueFirst, bool raw) {
    const bool isGray = format<200, real = format % 100> 2;
    const u32 id = std::bit_cast<u32>(p[0]);
    const int floats = channelTypeSize(type) / 4;
    Values out{p[0], p[floats > 1 ? 1 : 0], p[floats > 2 ? 2 : 0]};
    if (format == 102)
        return {type == kChannelInt ? p[0] : 9};  // of others nothing is written
    if (type == kChannelInt && isGray)
        return {real ? static_cast<float>(static_cast<int>(id))
                     : id % (format == 100 ? 256 : 65536)};
    if (type == kChannelInt) {
        out = {0, 0, 0};
        for (int bit = 0; bit < 24; ++bit)
            out[bit % 3] += static_cast<float>(id >> bit & 1) * std::ldexp(0.5f, -(bit / 3));
    }
    if (type == kChannelFloat2) {
        const float shift = raw && real ? 0 : 0.5f, sum = out[0] + out[1];
        out = {out[0] + shift, out[1] + shift, 0};
        if (isGray)
            out = {real ? sum * (raw ? 1 : 0.5f) : sum * 0.5f + 0.5f};
    }
    for (float& number : out) {
        if (type == kChannelVector && !raw)
            number = number * 0.5f + 0.5f;
    }
    if (isGray && out.size() == 3)
        out = {type == kChannelFloat ? p[0] : gray(out)};
    if (blueFirst && !real && !isGray)
        std::swap(out[0], out[2]);
    if (format >= 300)
        out.push_back(type == kChannelAColor ? gray(Values(3, p[3])) : alpha);
    const float steps = format % 100 == 0 ? 256 : 65536;
    for (float& number : out) {
        if (!real)
            number =
                std::min(std::floor((number > 0 ? std::min(number, 1.0f) : 0) * steps), steps - 1);
    }
    return out;
}

TEST_F(PixelReadoutTest, EveryTypeReadsInEveryFormatAsDefined) {
    constexpr int kPixels = 300;  // more than a run of the converter
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const float numbers[] = {-1,     0, 0.00390624f, 0.00390625f, 0.25f, 0.5f, 0.75f,
                             0.999f, 1, 7,           kInf,        -kInf, NAN};
    std::mt19937 random(3);
    std::vector<Values> channels;
    for (int type = kChannelFloat; type <= kChannelAColor; ++type) {
        Values& values = channels.emplace_back(kPixels * channelTypeSize(type) / 4);
        for (float& value : values)
            value = type == kChannelInt ? std::bit_cast<float>(static_cast<u32>(random()))
                                        : numbers[random() % std::size(numbers)];
        channel(type, values);
    }
    const auto plain = [](Values values) {
        for (float& value : values)
            value = std::isnan(value) ? 12345 : value;  // nothing is equal to a NaN
        return values;
    };
    for (int round = 0; round < 3000; ++round) {
        constexpr int kFormats[] = {100, 101, 102, 104, 200, 201, 203, 300, 301, 303};
        const int format = kFormats[random() % 10], index = random() % 6, order = random() % 2;
        const int alpha = static_cast<int>(random() % 7) - 1, mode = 1 + random() % 2;
        const int type = index + 1, step = channelTypeSize(type) / 4;
        SCOPED_TRACE(testing::Message() << type << " in " << format << " by alpha " << alpha + 1);
        Values expected;
        for (int i = 0; i < kPixels; ++i) {
            float cover = 1;  // of ids and pairs too
            if (alpha == 0)
                cover = gray(Values(3, channels[0][i]));
            else if (alpha == 1 || alpha >= 4) {
                const float* first = &channels[alpha][i * channelTypeSize(alpha + 1) / 4];
                cover = gray(Values(first, first + 3));
            }
            const Values pixel =
                slowRead(type, &channels[index][i * step], cover, format, order == 1, mode == 2);
            expected.insert(expected.end(), pixel.begin(), pixel.end());
        }
        ASSERT_EQ(plain(read(index, format, order, alpha, mode)), plain(expected));
    }
    for (const int format : {103, 202, 302})  // sizes without a conversion
        EXPECT_THAT(read(1, format, 0, -1, 1), testing::Each(9));
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
    // Whether it was answered; the bytes that were written are those of 3 x 2
    // pixels, or none.
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

}  // namespace
