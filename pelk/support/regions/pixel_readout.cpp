#include "pelk/support/regions/pixel_readout.h"

#include "pelk/contract/channel_alias.h"
#include "pelk/support/regions/pixel_readout_convert.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

/// Whether the rectangle has pixels and all of them lie in a region of this size.
bool liesInside(const PixelRect& rect, int width, int height) {
    return rect.x0 >= 0 && rect.y0 >= 0 && rect.x1 <= width && rect.y1 <= height &&
           rect.width > 0 && rect.height > 0 && rect.width <= width - rect.x0 &&
           rect.height <= height - rect.y0;
}

/// Calls beginMapping of all mappers, and endMapping on every way out of the read.
class MapperUse {
public:
    explicit MapperUse(std::span<ColorMapper* const> used) : mappers(used) {
        for (ColorMapper* mapper : mappers) {
            if (mapper)
                mapper->beginMapping(1);
        }
    }
    MapperUse(const MapperUse&) = delete;
    MapperUse& operator=(const MapperUse&) = delete;
    ~MapperUse() {
        for (ColorMapper* mapper : mappers) {
            if (mapper)
                mapper->endMapping(1);
        }
    }

private:
    std::span<ColorMapper* const> mappers;
};

/// Converts one row of the rectangle, run by run: a run ends where a page of either buffer does.
void convertRow(PixelConverter& converter, ChannelBuffer& pixels, const ChannelRecord* alpha,
                int index, int count, int pixelSize, u8* out) {
    while (count > 0) {
        ChannelBuffer::Run run = pixels.run(index, std::min(count, PixelConverter::kRun));
        const u8* alphas = nullptr;
        if (alpha) {
            const ChannelBuffer::Run beside = alpha->buffer->run(index, run.count);
            alphas = beside.data;
            run.count = beside.count;
        }
        converter.convert(run.data, alphas, alpha ? alpha->type : kChannelNone, run.count, out);
        index += run.count;
        count -= run.count;
        out += static_cast<std::size_t>(run.count) * pixelSize;
    }
}

}  // namespace

int PKRegionData::getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                            std::int64_t bufferSize, void* buffer, int order, int numMappers,
                            ColorMapper* const* mappers) {
    return getPixels(channel, alphaChannel, rect, format, bufferSize, buffer, order, numMappers,
                     mappers, 1);
}

int PKRegionData::getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                            std::int64_t bufferSize, void* buffer, int order, int numMappers,
                            ColorMapper* const* mappers, int vectorMode) {
    const int pixelSize = pixelFormatSize(format);
    if (!buffer || !liesInside(rect, width, height) ||
        bufferSize / rect.width / rect.height < pixelSize || !hasPixels(channel))
        return 0;
    const ChannelRecord& record = channels[channel];
    if (!PixelConverter::writes(record.type, format))
        return 1;
    const ChannelRecord* alpha = nullptr;
    if (hasPixels(alphaChannel) && channelTypeIsColor(channels[alphaChannel].type))
        alpha = &channels[alphaChannel];

    const bool mapped = (record.type == kChannelColor || record.type == kChannelAColor) &&
                        record.alias != kAliasImageAlpha &&
                        !(record.flags & kChannelNoColorMapping) && mappers && numMappers > 0;
    const std::span<ColorMapper* const> used(mappers, mapped ? numMappers : 0);
    const MapperUse use(used);
    PixelConverter converter(
        {record.type, format, order == kBlueFirst, vectorMode == kVectorsRaw, used});
    const std::size_t rowBytes = static_cast<std::size_t>(rect.width) * pixelSize;
    for (int row = 0; row < rect.height; ++row)
        convertRow(converter, *record.buffer, alpha, (rect.y0 + row) * width + rect.x0, rect.width,
                   pixelSize, static_cast<u8*>(buffer) + row * rowBytes);
    return 1;
}

}  // namespace Tarnkit
