#include "pelk/support/regions/text_stamp.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>

#include "pelk/base/memory.h"
#include "pelk/base/text_or.h"
#include "pelk/support/regions/channel_buffer.h"
#include "pelk/support/regions/stamp_font.h"

namespace Tarnkit {

namespace {

constexpr int kLineRows = 10;    // two empty rows, so that descenders touch no line below
constexpr int kMargin = 2;       // from the upper and left edge to the text
constexpr int kRightMargin = 1;  // from the text to the right edge
constexpr int kNoWrap = 0xFFFFFF;
constexpr float kStampValue = 0.18f;

Glyph glyphOf(char character) {
    return kGlyphOfByte[static_cast<u8>(character)];
}

struct TextSize {
    std::int64_t width = 0, height = kGlyphRows;
};

TextSize measure(std::string_view text, int limit) {
    TextSize size;
    std::int64_t cursor = 0;
    for (const char character : text) {
        const int columns = glyphWidth(glyphOf(character));
        size.width = cursor + columns;
        if (size.width > limit) {
            size.height += kLineRows;
            size.width = columns;
        }
        cursor = size.width + 1;
    }
    if (size.height > kGlyphRows)
        size.width = limit;
    size.width = std::max<std::int64_t>(size.width, 1);
    return size;
}

void drawGlyph(Glyph glyph, u8* upperLeft, int stride) {
    const int columns = glyphWidth(glyph);
    for (int row = 0; row < kGlyphRows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (hasInk(glyph, row, column))
                upperLeft[row * stride + column] = 1;
        }
    }
}

/// Draws as `measure` has measured, but for blanks: they begin no line here, so the text may end on
/// an earlier one, never on a later.
void draw(std::string_view text, int limit, u8* bitmap, int width) {
    std::int64_t x = 0, row = 0;
    for (const char character : text) {
        const Glyph glyph = glyphOf(character);
        const int columns = glyphWidth(glyph);
        if (glyph != 0) {
            if (x + columns > limit) {
                x = 0;
                row += kLineRows;
            }
            drawGlyph(glyph, bitmap + row * width + x, width);
        }
        x += columns + 1;
    }
}

/// A number that the bits of a name are spread over. Bytes count as signed.
u32 hashOf(std::string_view name) {
    u32 hash = 0x71E0FC17, last = 0;
    for (const char character : name) {
        last = last << 8 | static_cast<u32>(static_cast<signed char>(character));
        hash = (hash ^ (last * 8 | last >> 7)) * (last + 0x2370CEFC) + 0x7761001F;
    }
    return hash;
}

struct FreeMemory {
    void operator()(u8* memory) const { freeMemory(memory); }
};

}  // namespace

u8* renderText(const char* text, int& width, int& height, int maxWidth) {
    const std::string_view characters = textOrEmpty(text);
    const int limit = std::max(maxWidth, kGlyphColumns);
    const TextSize size = measure(characters, limit);
    const std::int64_t cells = size.width * size.height;
    if (cells > INT_MAX)
        allocationFailed(static_cast<std::size_t>(cells));
    width = static_cast<int>(size.width);
    height = static_cast<int>(size.height);
    u8* const bitmap = static_cast<u8*>(allocate(static_cast<std::size_t>(cells)));
    std::memset(bitmap, 0, static_cast<std::size_t>(cells));
    draw(characters, limit, bitmap, width);
    return bitmap;
}

Color stampColor(std::string_view name) {
    constexpr float kDegrees = 0.005493164f;  // of one step of 16 bits: 360 / 65536
    const float hue = static_cast<float>(hashOf(name) & 0xFFFF) * kDegrees / 60.0f;
    const int sector = static_cast<int>(hue);
    const float part = hue - static_cast<float>(sector);
    const float falling = (1.0f - part) * kStampValue, rising = part * kStampValue;
    switch (sector) {
        case 0:
            return {kStampValue, rising, 0.0f};
        case 1:
            return {falling, kStampValue, 0.0f};
        case 2:
            return {0.0f, kStampValue, rising};
        case 3:
            return {0.0f, falling, kStampValue};
        case 4:
            return {rising, 0.0f, kStampValue};
        default:
            return {kStampValue, 0.0f, falling};
    }
}

void stampName(ChannelBuffer& pixels, int width, int height, const char* name, int mode) {
    int textWidth, textHeight;
    const int maxWidth = mode == kStampWrapped ? width - 2 * kMargin : kNoWrap;
    const std::unique_ptr<u8, FreeMemory> bitmap(renderText(name, textWidth, textHeight, maxWidth));
    const int left = mode == kStampRight ? width - textWidth - kRightMargin : kMargin;
    const Color paper = stampColor(textOrEmpty(name)), ink(1.0f);
    const int itemSize = pixels.getItemSize();
    for (int y = 0; y < height; ++y) {
        const int row = y - kMargin;
        int column = -left;
        pixels.forEachRun(y * width, width, [&](u8* pixel, int count) {
            for (; count > 0; --count, ++column, pixel += itemSize) {
                const bool inside =
                    row >= 0 && row < textHeight && column >= 0 && column < textWidth;
                const bool inked = inside && bitmap.get()[row * textWidth + column] != 0;
                std::memcpy(pixel, inked ? &ink : &paper, sizeof(Color));
            }
        });
    }
}

}  // namespace Tarnkit
