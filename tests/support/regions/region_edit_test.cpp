// Merging, transfer, read-out and drawing of regions against plain loops over all pixels.
#include <gmock/gmock.h>

#include <random>

#include "pelk/support/regions/region_mask.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

using Pixel = std::vector<float>;

struct TestMask : RegionMask {
    int getMaskMode() override { return mode; }
    float getMaskValue(int x, int y) override { return (x + 2 * y) % 3 ? 2e-6f : 1e-6f; }
    int mode = 0;
};

class RegionEditTest : public testing::Test {
protected:
    /// A region with its channels, and the same pixels as plain numbers.
    struct Film {
        TestChannels c;
        PKRegionData region;
        int x0, y0, x1, y1, width, height;
        std::vector<std::vector<Pixel>> pixels;  // by channel and place

        Pixel& at(int channel, int x, int y) {
            return pixels[channel][(x - x0) + (y - y0) * width];
        }
        bool has(int x, int y) const { return x >= x0 && x < x1 && y >= y0 && y < y1; }
        int channelCount() const { return static_cast<int>(pixels.size()); }
    };

    int draw(int from, int to) { return std::uniform_int_distribution(from, to)(random); }

    /// Random pixels, in pages that end anywhere in a row.
    void make(Film& film, const std::vector<int>& with) {
        constexpr int kAliases[] = {126, 125, 0, 0, 0, 0, 0};
        for (int i = 0; i < std::ssize(with); ++i)
            film.c.add(with[i], kAliases[i], "", i == 6 ? kChannelNoBuffer : 0);
        const int x = draw(-8, 4), y = draw(-8, 4);
        const int width = draw(1, 12) * (draw(0, 19) ? 1 : 60);  // some rows are longer than a run
        film.region.setRect(x, y, x + width, y + draw(1, 12));
        film.region.setChannels(film.c.list);
        film.region.beginRendering();
        for (const ChannelRecord& record : film.region.getChannels()) {
            if (!record.buffer)
                continue;
            const int size = channelTypeSize(record.type), count = film.region.getPixelCapacity();
            record.buffer->free();
            record.buffer->resize(count, size, draw(1, 40) * draw(1, 20) * size, 0);
            for (int i = 0; i < count * size / 4; ++i)
                reinterpret_cast<float*>(record.buffer->item(i * 4 / size))[i % (size / 4)] =
                    static_cast<float>(draw(0, 8)) * 0.25f;
            if (record.alias == 125 && draw(0, 1))
                std::memset(record.buffer->item(draw(0, count - 1)), 0, size);
        }
        read(film);
    }
    static void read(Film& f) {
        f.region.getRect(f.x0, f.y0, f.x1, f.y1, f.width, f.height);
        f.pixels.clear();
        for (const ChannelRecord& record : f.region.getChannels()) {
            f.pixels.emplace_back();
            const int numbers = channelTypeSize(record.type) / 4;
            for (int i = 0; record.buffer && i < f.width * f.height; ++i) {
                const float* pixel = reinterpret_cast<float*>(record.buffer->item(i));
                f.pixels.back().emplace_back(pixel, pixel + numbers);
            }
        }
    }
    /// The region has the numbers of `film.pixels`.
    static void expectPixels(Film& film) {
        const auto expected = film.pixels;
        read(film);
        ASSERT_EQ(film.pixels, expected);
    }
    /// Calls `visit(x, y)` for all pixels of the film, as places in the image.
    template <class Visit>
    static void forAll(const Film& film, Visit visit) {
        for (int y = film.y0; y < film.y1; ++y) {
            for (int x = film.x0; x < film.x1; ++x)
                visit(x, y);
        }
    }

    std::mt19937 random{7};
    const std::vector<int> types{kChannelColor,  kChannelColor, kChannelInt,   kChannelFloat2,
                                 kChannelVector, kChannelFloat, kChannelAColor};
};

/// One pixel of a merge, by the definition.
void mergePixel(Pixel& to, const Pixel& from, int alias, Pixel cover, int type) {
    if ((alias != 125 && alias != 126) || type == kChannelFloat2 || type == kChannelInt) {
        to = from;
        return;
    }
    cover.resize(4, (cover[0] + cover[1] + cover[2]) * 0.33333334f);
    if (to.size() == 1)
        cover[0] = cover[3];
    for (std::size_t i = 0; i < to.size(); ++i)
        to[i] = std::max(0.0f, 1.0f - cover[i]) * to[i] + (alias == 126 ? from[i] : cover[i]);
}

TEST_F(RegionEditTest, MergeChangesWhatOverlapsAndTheMaskLetsPass) {
    const int beauties[] = {kChannelColor, kChannelFloat, kChannelAColor};
    const int alphas[] = {kChannelColor, kChannelFloat, kChannelAColor, kChannelInt};
    for (int round = 0; round < 800; ++round) {
        Film from, to;
        std::vector<int> here = types, there = types;
        here[0] = there[0] = beauties[draw(0, 2)];
        here[1] = there[1] = alphas[draw(0, 3)];
        here[3] = draw(0, 1) ? kChannelFloat2 : kChannelFloat;
        there.resize(draw(1, 7));
        make(from, there);
        make(to, here);
        TestMask mask;
        mask.mode = draw(0, 3);
        if (draw(0, 3))
            to.region.mask = &mask;
        const int alphaType = there.size() > 1 ? there[1] : kChannelNone;
        forAll(to, [&](int x, int y) {
            if (!from.has(x, y))
                return;
            Pixel cover(3, 1.0f);
            if (alphaType == kChannelFloat)
                cover.assign(3, from.at(1, x, y)[0]);
            else if (alphaType == kChannelColor || alphaType == kChannelAColor)
                std::copy_n(from.at(1, x, y).begin(), 3, cover.begin());
            const bool over = to.region.mask && mask.mode == 2;
            const float value =
                over ? (cover[0] + cover[1] + cover[2]) * 0.33333334f : mask.getMaskValue(x, y);
            if (to.region.mask && ((mask.mode != 1 && !over) || !(value > 1e-6f)))
                return;
            for (int i = 0; i < from.channelCount(); ++i) {
                const ChannelRecord& record = to.region.getChannels()[i];
                const bool same = channelTypeSize(here[i]) == channelTypeSize(there[i]);
                if (same && !from.pixels[i].empty() && !to.pixels[i].empty())
                    mergePixel(to.at(i, x, y), from.at(i, x, y), over ? record.alias : 0, cover,
                               record.type);
            }
        });
        to.region.copyFrom(from.region);
        ASSERT_NO_FATAL_FAILURE(expectPixels(to)) << "round " << round;
    }
}

TEST_F(RegionEditTest, BlocksAndSingleChannelsArriveWhole) {
    for (int round = 0; round < 500; ++round) {
        Film from, to;
        make(from, types);
        make(to, types);
        const int channel = draw(-1, 7), x = draw(-9, 9), y = draw(-9, 9);
        if (channel >= 0 && channel < 6) {
            const int width = from.width + draw(0, 1);  // one more than the buffer has
            forAll(to, [&](int px, int py) {
                const int column = px - x, row = py - y;
                if (width == from.width && column >= 0 && column < from.width && row >= 0 &&
                    row < from.height)
                    to.at(channel, px, py) = from.pixels[channel][column + row * from.width];
            });
            to.region.copyChannelRect(*from.region.getChannels()[channel].buffer, channel, x, y,
                                      width, from.height);
        }
        ASSERT_NO_FATAL_FAILURE(expectPixels(to));

        std::vector<u8> block(from.region.getBuffer(nullptr, 0)), written;
        from.region.getBuffer(block.data(), std::ssize(block));
        from.region.writeBuffer([&](const void* bytes, std::size_t count) {
            const u8* first = static_cast<const u8*>(bytes);
            written.insert(written.end(), first, first + count);
            return true;
        });
        ASSERT_EQ(written, block);
        to.region.setBuffer(block.data());
        to.pixels = from.pixels;
        ASSERT_NO_FATAL_FAILURE(expectPixels(to));

        const int left = draw(0, to.width - 1), top = draw(0, to.height - 1);
        const int right = draw(left + 1, to.width), bottom = draw(top + 1, to.height);
        const PixelRect rect{left, top, right, bottom, right - left, bottom - top};
        std::vector<AColor> seen(rect.width * rect.height);
        ASSERT_TRUE(to.region.getPixels(4, 5, rect, kPixelRGBAFloat, 16 * std::ssize(seen),
                                        seen.data(), 0, 0, nullptr, kVectorsRaw));
        for (int i = 0; i < std::ssize(seen); ++i) {
            const int place = (top + i / rect.width) * to.width + left + i % rect.width;
            const Pixel& vector = to.pixels[4][place];
            ASSERT_EQ(seen[i].color, Color(vector[0], vector[1], vector[2]));
            ASSERT_FLOAT_EQ(seen[i].alpha, to.pixels[5][place][0]);
        }
    }
}

TEST_F(RegionEditTest, DrawingStaysInsideAndTouchesItsChannelsAlone) {
    for (int round = 0; round < 800; ++round) {
        Film film;
        make(film, types);
        const int what = draw(0, 8), a = draw(-1, 6), b = draw(-1, 6);
        const int x0 = draw(-4, 14), y0 = draw(-4, 14), x1 = draw(-4, 14), y1 = draw(-4, 14);
        PKRegionData& region = film.region;
        const auto drawable = [&](int i) { return i == 0 || i == 1 || i == 4; };
        const Color red(9, 1, 2), blue(3, 4, 9);
        const auto column = [&](int x) { return std::clamp(x, 0, film.width - 1); };
        const auto row = [&](int y) { return std::clamp(y, 0, film.height - 1); };
        const auto inside = [&](int x, int y) {
            if (what == 1)
                return x >= column(x0) && x <= column(x1) && y == row(y0);
            if (what == 2)
                return y >= row(y0) && y <= row(y1) && x == column(x0);
            return x >= x0 && x < x1 && y >= y0 && y < y1;
        };
        forAll(film, [&](int ix, int iy) {
            const int x = ix - film.x0, y = iy - film.y0;
            if (!inside(x, y))
                return;
            Pixel& beauty = film.at(0, ix, iy);
            const Pixel black(3), half{beauty[0] / 2, beauty[1] / 2, beauty[2] / 2};
            if (what < 3 && drawable(a))
                film.at(a, ix, iy) = {9, 1, 2};
            if (what == 0 && drawable(a) && drawable(b))
                film.at(b, ix, iy) = {3, 4, 9};
            if ((what == 3 && (x + y) % 2 == 0) || (what == 4 && y % 2 == 0))
                beauty = black;
            if (what == 5 || what == 6)
                beauty = {half[0], half[1], what == 5 ? half[2] : 1 - (1 - beauty[2]) / 2};
            for (int i = 0; what == 7 && i < 6; ++i)
                film.at(i, ix, iy).assign(film.at(i, ix, iy).size(), 0.25f);
        });
        if (what == 0)
            region.fillRect(x0, y0, x1, y1, red, blue, a, b);
        else if (what == 1)
            region.drawRow(x0, y0, x1, red, a);
        else if (what == 2)
            region.drawColumn(x0, y0, y1, red, a);
        else
            region.shadeRegion(x0, y0, x1, y1, what - 2);
        ASSERT_NO_FATAL_FAILURE(expectPixels(film)) << what << " in round " << round;
    }
}

}  // namespace
