#include "pelk/support/regions/text_stamp.h"

#include <gmock/gmock.h>

#include "pelk/base/memory.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

struct Bitmap {
    Bitmap(const char* text, int maxWidth) { cells = renderText(text, width, height, maxWidth); }
    ~Bitmap() { freeMemory(cells); }
    /// The rows, each behind a line end, `#` for ink.
    std::string art() const {
        std::string rows;
        for (int i = 0; i < width * height; ++i)
            rows += std::string(i % width ? "" : "\n") + (cells[i] ? '#' : '.');
        return rows;
    }
    int width, height;
    u8* cells;
};

TEST(TextStampTest, TextIsSetInLinesOfTenRows) {
    EXPECT_EQ(Bitmap("gW\xE9.", 100).art(),
              "\n.....#.....#........."
              "\n.....#.....#........."
              "\n.###..#.#.#.........."
              "\n#..#..#.#.#.........."
              "\n.##....#.#..........."
              "\n.#.....#.#..........#"
              "\n#.#.................."
              "\n.#...................");
    const struct {
        const char *what, *text;
        int maxWidth, width, height;
    } cases[] = {
        {"empty", "", 100, 1, 8},
        {"a digit", "1", 100, 3, 8},
        {"a column between two", "11", 7, 7, 8},
        {"no limit below 7", "111", 0, 7, 18},
        {"a blank counts for a new line", "1  ", 11, 11, 18},
        {"no text", nullptr, 100, 1, 8},
    };
    for (const auto& c : cases) {
        const Bitmap bitmap(c.text, c.maxWidth);
        EXPECT_EQ(bitmap.width, c.width) << c.what;
        EXPECT_EQ(bitmap.height, c.height) << c.what;
    }
    EXPECT_EQ(Bitmap("11", 7).art(), Bitmap("11", 100).art());
    // Each blank counts for a line and begins none: the second glyph stands on the second line.
    const std::string art = Bitmap("1  1", 8).art(), one = Bitmap("1     ", 100).art();
    ASSERT_EQ(art.size(), 9 * 38u);
    EXPECT_EQ(art.substr(9 * 10, 5), "\n.#..");
    EXPECT_EQ(art.substr(9 * 11, 5), "\n##..");
    EXPECT_EQ(art.find('#', 9 * 18), std::string::npos);
}

TEST(TextStampTest, ColoursAreThoseOfTheNamesHash) {
    // The low 16 bits of the hash decide the hue. Bytes are signed: 0xE9 is -23.
    const u32 u = static_cast<u32>(-23);
    const u32 signedByte = (0x71E0FC17 ^ (u * 8 | u >> 7)) * (u + 0x2370CEFC) + 0x7761001F;
    const std::pair<const char*, u32> names[] = {{"abc", 44252}, {"", 64535}, {"\xE9", signedByte}};
    for (const auto& [name, hash] : names) {
        const float hue = static_cast<float>(hash & 0xFFFF) * 6 / 65536;
        const auto tent = [&](float middle) {
            return 0.18f * std::clamp(2 - std::abs(hue - middle), 0.0f, 1.0f);
        };
        EXPECT_NEAR(stampColor(name).r, 0.18f - tent(3), 1e-6f) << name;
        EXPECT_NEAR(stampColor(name).g, tent(2), 1e-6f) << name;
        EXPECT_NEAR(stampColor(name).b, tent(4), 1e-6f) << name;
    }
}

struct StampChannel : TestChannel, StampModeInterface {
    StampChannel(int ofType, int layout) : TestChannel(ofType, 134), mode(layout) {}
    PluginInterface* getInterface(u64 id) override {
        return InterfaceList<StampModeInterface>::find(*this, mode > 0 ? id : 0);
    }
    PluginBase* getPlugin() override { return this; }
    int getStampMode() override { return mode; }
    int mode;
};

TEST(TextStampTest, ABlockFromElsewhereIsStampedWithItsName) {
    const char* const name = "render-07";
    for (int round = 0; round < 300; ++round) {
        const int type = 1 + round % 6, mode = round / 6 % 5, width = 1 + round, height = 30;
        StampChannel channel(type, mode);
        RenderChannel* const list[] = {&channel};
        PKRegionData region;
        region.setChannels(list);
        region.setRect(3, 4, 3 + width, 4 + height);
        region.beginRendering();
        std::vector<u8> block(region.getBuffer(nullptr, 0));
        region.getBuffer(block.data(), std::ssize(block));
        std::strcpy(reinterpret_cast<char*>(&block[4]), name);
        EXPECT_FALSE(region.setBuffer(block.data(), std::ssize(block)).isError());

        const Bitmap text(name, mode == 3 ? width - 4 : 1000);
        const int left = mode < 2 ? width - 1 - text.width : 2;
        for (int i = 0; i < width * height; ++i) {
            const int x = i % width - left, y = i / width - 2;
            const bool inside = x >= 0 && x < text.width && y >= 0 && y < text.height;
            Color expected = inside && text.cells[x + y * text.width] ? Color(1) : stampColor(name);
            if (channelTypeSize(type) < 12)
                expected = Color(0.25f);  // as it was
            const auto* pixel = reinterpret_cast<float*>(region.getChannels()[0].buffer->item(i));
            const bool wide = channelTypeSize(type) >= 12;
            ASSERT_EQ(wide ? Color(pixel[0], pixel[1], pixel[2]) : Color(pixel[0]), expected)
                << "mode " << mode << " type " << type << " pixel " << i;
        }
    }
}

}  // namespace
