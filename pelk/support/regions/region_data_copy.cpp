// How one region takes over pixels of another that overlaps it.
#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/support/regions/region_data.h"
#include "pelk/support/regions/region_mask.h"

namespace Tarnkit {

namespace {

/// What a mask has to exceed for a pixel to change.
constexpr float kMaskThreshold = 1e-6f;

/// A rectangle of the image. In 64 bits, as corners of two rectangles are compared before it is
/// known whether they are sound.
struct Area {
    std::int64_t x0, y0, x1, y1;

    bool isEmpty() const { return x0 >= x1 || y0 >= y1; }
    int width() const { return static_cast<int>(x1 - x0); }
};

Area areaOf(PKRegionData& region) {
    int x0, y0, x1, y1, width, height;
    region.getRect(x0, y0, x1, y1, width, height);
    return {x0, y0, x1, y1};
}

Area overlapOf(const Area& a, const Area& b) {
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}

/// A buffer that holds all pixels of an area.
struct Plane {
    ChannelBuffer& pixels;
    Area area;

    int indexOf(std::int64_t x, std::int64_t y) const {
        return static_cast<int>((x - area.x0) + (y - area.y0) * area.width());
    }
};

/// How many rows of `width` items, which begin `stride` items apart, a run of `count` items has.
std::int64_t rowsIn(int count, int width, int stride) {
    return count < width ? 0 : (count - width) / stride + 1;
}

/// Copies the pixels of an area that both planes have. Finds its place in the pages once for all
/// rows that lie in the same ones: rows of a tile are so short that this would take as long as the
/// copy.
void copyArea(const Plane& from, const Plane& to, const Area& area) {
    const int width = area.width(), fromWidth = from.area.width(), toWidth = to.area.width();
    const int itemSize = from.pixels.getItemSize();
    if (width == fromWidth && width == toWidth) {  // the rows are one piece
        const auto count = static_cast<int>(width * (area.y1 - area.y0));
        return copyItems(from.pixels, from.indexOf(area.x0, area.y0), to.pixels,
                         to.indexOf(area.x0, area.y0), count);
    }
    for (std::int64_t y = area.y0; y < area.y1;) {
        const int fromIndex = from.indexOf(area.x0, y), toIndex = to.indexOf(area.x0, y);
        const ChannelBuffer::Run source = from.pixels.run(fromIndex, INT_MAX);
        const ChannelBuffer::Run target = to.pixels.run(toIndex, INT_MAX);
        const std::int64_t rows = std::min({rowsIn(source.count, width, fromWidth),
                                            rowsIn(target.count, width, toWidth), area.y1 - y});
        for (std::int64_t row = 0; row < rows; ++row)
            std::memmove(target.data + row * toWidth * itemSize,
                         source.data + row * fromWidth * itemSize,
                         static_cast<std::size_t>(width) * itemSize);
        if (rows == 0)  // the row goes on in another page
            copyItems(from.pixels, fromIndex, to.pixels, toIndex, width);
        y += std::max<std::int64_t>(rows, 1);
    }
}

/// A pixel of an alpha channel as a colour, by the type of the channel.
Color alphaColor(const u8* pixel, int type) {
    Color alpha;
    if (type == kChannelFloat) {
        std::memcpy(&alpha.r, pixel, sizeof alpha.r);
        return Color(alpha.r);
    }
    std::memcpy(&alpha, pixel, sizeof alpha);
    return alpha;
}

/// Which pixels of one row change, and by how much what was there is covered.
class MaskedRow {
public:
    MaskedRow(RegionMask& with, const ChannelRecord* alphaRecord, const Area& alphaArea, int width)
        : mask(with),
          mode(with.getMaskMode()),
          alpha(alphaRecord),
          area(alphaArea),
          covers(static_cast<std::size_t>(width)),
          passes(covers.size()) {}

    /// Asks the mask for the row `y` from `x` on.
    void read(std::int64_t x, std::int64_t y) {
        for (std::size_t i = 0; i < covers.size(); ++i, ++x) {
            covers[i] = mode == kMaskByAlpha ? coverAt(x, y) : Color(0.0f);
            float value = mean(covers[i]);
            if (mode == kMaskByValue)
                value = mask.getMaskValue(static_cast<int>(x), static_cast<int>(y));
            passes[i] = value > kMaskThreshold;
        }
    }

    /// Merges the row's pixels of a channel into those of `record`, from the given items on.
    void merge(ChannelBuffer& from, int fromIndex, const ChannelRecord& record, int toIndex) const {
        const bool over = mode == kMaskByAlpha && channelTypeIsColor(record.type);
        for (std::size_t i = 0; i < passes.size(); ++i, ++fromIndex, ++toIndex) {
            if (!passes[i])
                continue;
            const u8* source = from.item(fromIndex);
            u8* target = record.buffer->item(toIndex);
            const int size = from.getItemSize();
            if (over && record.alias == kAliasImageColor)
                composite(target, source, covers[i], size);
            else if (over && record.alias == kAliasImageAlpha)
                composite(target, nullptr, covers[i], size);
            else
                std::memcpy(target, source, static_cast<std::size_t>(size));
        }
    }

private:
    Color coverAt(std::int64_t x, std::int64_t y) const {
        if (!alpha)
            return Color(1.0f);
        return alphaColor(alpha->buffer->item(Plane{*alpha->buffer, area}.indexOf(x, y)),
                          alpha->type);
    }

    /// Puts a pixel of `size` bytes over `target`, by a cover for each of its components: the mean
    /// where one number stands for all, and for the alpha behind three of them. The pixel is
    /// `added`, or the cover itself if that is null.
    static void composite(u8* target, const u8* added, const Color& cover, int size) {
        const float gray = mean(cover);
        const float shares[] = {size == sizeof(float) ? gray : cover.r, cover.g, cover.b, gray};
        float under[4], over[4];
        const auto bytes = static_cast<std::size_t>(size);
        std::memcpy(under, target, bytes);
        std::memcpy(over, added ? static_cast<const void*>(added) : shares, bytes);
        for (std::size_t i = 0; i < bytes / sizeof(float); ++i)
            under[i] = std::max(0.0f, 1.0f - shares[i]) * under[i] + over[i];
        std::memcpy(target, under, bytes);
    }

    RegionMask& mask;
    const int mode;
    const ChannelRecord* const alpha;  // of the source; null if it counts as opaque
    const Area area;                   // of the source
    std::vector<Color> covers;
    std::vector<u8> passes;  // not 0 for a pixel that changes
};

}  // namespace

/// Whether pixels of the channel can be taken from the channel of that index in another region.
bool PKRegionData::canCopy(const PKRegionData& source, int index) const {
    return hasPixels(index) && source.hasPixels(index) &&
           channels[index].buffer->getItemSize() == source.channels[index].buffer->getItemSize();
}

void PKRegionData::copyFrom(PKRegionData& source) {
    const Area here = areaOf(*this), there = areaOf(source), overlap = overlapOf(here, there);
    if (overlap.isEmpty() || pixelCapacity < pixelCount())
        return;
    if (mask)
        return copyMasked(source);
    for (int i = std::min(channels.size(), source.channels.size()); i-- > 0;) {
        if (canCopy(source, i))
            copyArea({*source.channels[i].buffer, there}, {*channels[i].buffer, here}, overlap);
    }
}

/// Copies what the mask lets pass. Goes row by row and not channel by channel, so that the mask is
/// asked once for each pixel.
void PKRegionData::copyMasked(PKRegionData& source) {
    const Area here = areaOf(*this), there = areaOf(source), overlap = overlapOf(here, there);
    const int alpha = source.findChannelByAlias(kAliasImageAlpha);
    const bool covers = source.hasPixels(alpha) && channelTypeIsColor(source.channels[alpha].type);
    MaskedRow row(*mask, covers ? &source.channels[alpha] : nullptr, there, overlap.width());
    for (std::int64_t y = overlap.y0; y < overlap.y1; ++y) {
        row.read(overlap.x0, y);
        for (int i = std::min(channels.size(), source.channels.size()); i-- > 0;) {
            if (!canCopy(source, i))
                continue;
            const Plane from{*source.channels[i].buffer, there}, to{*channels[i].buffer, here};
            row.merge(from.pixels, from.indexOf(overlap.x0, y), channels[i],
                      to.indexOf(overlap.x0, y));
        }
    }
}

void PKRegionData::copyChannelRect(ChannelBuffer& sourceBuffer, int channelIndex, int x, int y,
                                   int rectWidth, int rectHeight) {
    if (isChannel(channelIndex) && !channels[channelIndex].buffer)
        allocateChannelBuffer(channelIndex);
    if (!hasPixels(channelIndex))
        return;
    ChannelBuffer& buffer = *channels[channelIndex].buffer;
    const Area here = areaOf(*this),
               there{x, y, std::int64_t{x} + rectWidth, std::int64_t{y} + rectHeight};
    const Area overlap = overlapOf(here, there);
    if (overlap.isEmpty() || buffer.getItemSize() != sourceBuffer.getItemSize() ||
        std::int64_t{rectWidth} * rectHeight > sourceBuffer.size())
        return;
    copyArea({sourceBuffer, there}, {buffer, here}, overlap);
}

}  // namespace Tarnkit
