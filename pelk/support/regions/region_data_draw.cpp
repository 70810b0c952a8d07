// Marks in an image that is in the making.
#include <algorithm>
#include <cstring>

#include "pelk/base/color.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

constexpr Color kBlack(0.0f);

/// What remains of a colour in a mode of shadeRegion. `x`, `y`: the pixel's place in the region.
Color shaded(Color color, int x, int y, int mode) {
    switch (mode) {
        case kShadeChecker:
            return (x + y) % 2 == 0 ? kBlack : color;
        case kShadeRows:
            return y % 2 == 0 ? kBlack : color;
        case kShadeDark:
            return color * 0.5f;
        default:
            return {color.r * 0.5f, color.g * 0.5f, 1.0f - (1.0f - color.b) * 0.5f};
    }
}

}  // namespace

/// Whether the channel can be drawn into: it has pixels, of three floats.
bool PKRegionData::isDrawable(int channel) const {
    return pixelCount() > 0 && hasPixels(channel) &&
           (channels[channel].type == kChannelColor || channels[channel].type == kChannelVector);
}

/// Calls `visit(pixel, x, y)` for the pixels of a rectangle of the channel, which is inside of the
/// region.
template <class Visit>
void PKRegionData::forEachPixel(int channel, const PixelRect& rect, Visit visit) {
    ChannelBuffer& buffer = *channels[channel].buffer;
    for (int y = rect.y0; y < rect.y1; ++y) {
        int x = rect.x0;
        buffer.forEachRun(x + y * width, rect.x1 - x, [&](u8* pixels, int count) {
            for (; count > 0; --count, ++x, pixels += buffer.getItemSize())
                visit(pixels, x, y);
        });
    }
}

/// The part of a rectangle that the region has. Corners of an inverted one stay inverted.
PixelRect PKRegionData::clamped(int left, int top, int right, int bottom) const {
    return {std::clamp(left, 0, width), std::clamp(top, 0, height), std::clamp(right, 0, width),
            std::clamp(bottom, 0, height)};
}

void PKRegionData::fillArea(int channel, const PixelRect& rect, const Color& color) {
    forEachPixel(channel, rect,
                 [&](u8* pixel, int, int) { std::memcpy(pixel, &color, sizeof color); });
}

void PKRegionData::fillRect(int left, int top, int right, int bottom, const Color& colorA,
                            const Color& colorB, int channelA, int channelB) {
    if (!isDrawable(channelA))
        return;
    fillArea(channelA, clamped(left, top, right, bottom), colorA);
    if (isDrawable(channelB))
        fillArea(channelB, clamped(left, top, right, bottom), colorB);
}

void PKRegionData::drawRow(int from, int y, int to, const Color& color, int channel) {
    if (!isDrawable(channel))
        return;
    const int row = std::clamp(y, 0, height - 1), last = std::clamp(to, 0, width - 1);
    fillArea(channel, {std::clamp(from, 0, width - 1), row, last + 1, row + 1}, color);
}

void PKRegionData::drawColumn(int x, int from, int to, const Color& color, int channel) {
    if (!isDrawable(channel))
        return;
    const int column = std::clamp(x, 0, width - 1), last = std::clamp(to, 0, height - 1);
    fillArea(channel, {column, std::clamp(from, 0, height - 1), column + 1, last + 1}, color);
}

void PKRegionData::shadeRegion(int left, int top, int right, int bottom, int mode) {
    const int image = findChannelByAlias(kAliasImageColor);
    if (pixelCount() == 0 || !hasPixels(image))
        return;
    const PixelRect rect = clamped(left, top, right, bottom);
    if (mode == kShadeReset)
        return resetPixels(rect);
    const bool hasColor = channels[image].buffer->getItemSize() >= static_cast<int>(sizeof(Color));
    if (mode < kShadeChecker || mode > kShadeBlue || !hasColor)
        return;
    forEachPixel(image, rect, [&](u8* pixel, int x, int y) {
        Color color;
        std::memcpy(&color, pixel, sizeof color);
        color = shaded(color, x, y, mode);
        std::memcpy(pixel, &color, sizeof color);
    });
}

/// Takes the pixels of a rectangle back to their start values.
void PKRegionData::resetPixels(const PixelRect& rect) {
    for (int i = 0; i < channels.size(); ++i) {
        if (!hasPixels(i))
            continue;
        const ChannelRecord& record = channels[i];
        forEachPixel(i, rect, [&](u8* pixel, int, int) {
            if (record.channel)
                record.channel->fillPixels(pixel, 1);
            else
                std::memset(pixel, 0, static_cast<std::size_t>(record.buffer->getItemSize()));
        });
    }
}

}  // namespace Tarnkit
