#include "pelk/host/picture/exr_writer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "pelk/contract/channel_alias.h"
#include "pelk/host/picture/origin_attributes.h"

namespace Tarnkit {

namespace {

constexpr float kLargestHalf = 65504.0f;

/// A layer of an EXR file: the channel of the picture that it stores, how that is read, and the
/// names of its components.
struct Layer {
    int channel = 0;
    int alphaChannel = -1;
    int format = kPixelRGBFloat;
    const char* suffixes = "RGB";  ///< a letter for each value of a pixel, "#" for "ID"
    OIIO::TypeDesc type = OIIO::TypeDesc::FLOAT;

    int values() const { return static_cast<int>(std::strlen(suffixes)); }
};

/// The layer of a channel beyond beauty and alpha.
Layer layerOf(const ChannelInfo& info, int channel, OIIO::TypeDesc colorType) {
    switch (info.type) {
        case kChannelFloat:
            return {channel, -1, kPixelGrayFloat, info.alias == kAliasZDepth ? "Z" : "Y"};
        case kChannelFloat2:
            return {channel, -1, kPixelRGBFloat, "UV"};
        case kChannelInt:
            return {channel, -1, kPixelGray32, "#", OIIO::TypeDesc::UINT};
        case kChannelVector:
            return {channel, -1, kPixelRGBFloat, "XYZ"};
        case kChannelAColor:
            return {channel, -1, kPixelRGBAFloat, "RGBA", colorType};
        default:
            return {channel, -1, kPixelRGBFloat, "RGB", colorType};
    }
}

/// All layers of an EXR, the first of which has no name.
std::vector<Layer> layersOf(PixelBufferInterface& pixels, OIIO::TypeDesc colorType) {
    std::vector<Layer> layers{{kBeautyChannel, kAlphaChannel, kPixelRGBAFloat, "RGBA", colorType}};
    for (int i = kFirstExtraChannel; i < pixels.getNumChannels(); ++i) {
        ChannelInfo info;
        pixels.getChannelInfo(i, info);
        layers.push_back(layerOf(info, i, colorType));
    }
    return layers;
}

/// Reads rows of a layer from the picture, as they stand in memory.
class LayerReader {
public:
    /// `window`: the pixels that the file stores.
    LayerReader(Picture& picture, const PictureRect& window_, const Layer& layer_)
        : region(picture.getRegion()),
          window(window_),
          width(window.x1 - window.x0),
          layer(layer_),
          row(static_cast<std::size_t>(width) * pixelFormatSize(layer.format)) {}

    /// Writes `layer.values()` values of `layer.type` into each pixel of a row in a file, of
    /// `stride` bytes each. False if the picture doesn't have them.
    bool read(int y, std::uint8_t* out, std::size_t stride) {
        const PixelRect rect{window.x0, y, window.x1, y + 1, width, 1};
        if (!region.getPixels(layer.channel, layer.alphaChannel, rect, layer.format,
                              static_cast<std::int64_t>(row.size()), row.data(), 0, 0, nullptr,
                              kVectorsRaw))
            return false;
        const std::size_t step = static_cast<std::size_t>(pixelFormatSize(layer.format));
        const std::size_t bytes = static_cast<std::size_t>(layer.values()) * sizeof(float);
        for (int x = 0; x < width; ++x, out += stride) {
            const std::uint8_t* const pixel = row.data() + static_cast<std::size_t>(x) * step;
            if (layer.type == OIIO::TypeDesc::HALF)
                storeHalf(pixel, out);
            else
                std::memcpy(out, pixel, bytes);
        }
        return true;
    }

private:
    /// Clamps to the range of 16-bit floats, beyond which a value would become infinite.
    void storeHalf(const std::uint8_t* pixel, std::uint8_t* out) const {
        float values[4] = {};
        const int count = layer.values();
        std::memcpy(values, pixel, static_cast<std::size_t>(count) * sizeof(float));
        for (float& value : values)
            value = std::clamp(value, -kLargestHalf, kLargestHalf);
        OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, values, OIIO::TypeDesc::HALF, out, count);
    }

    PKRegionData& region;
    const PictureRect window;
    const int width;
    const Layer layer;
    std::vector<std::uint8_t> row;
};

void addChannels(const Layer& layer, const std::string& prefix, OIIO::ImageSpec& spec) {
    for (const char* suffix = layer.suffixes; *suffix; ++suffix) {
        spec.channelnames.push_back(prefix + (*suffix == '#' ? "ID" : std::string(1, *suffix)));
        spec.channelformats.push_back(layer.type);
    }
}

/// An EXR with these layers. The order of its channels is theirs.
OIIO::ImageSpec exrSpec(Picture& picture, const PictureRect& window, std::span<const Layer> layers,
                        const PictureInfo& info) {
    OIIO::ImageSpec spec(window.x1 - window.x0, window.y1 - window.y0, 0, layers.front().type);
    spec.x = window.x0;
    spec.y = window.y0;
    spec.full_width = picture.getWidth();
    spec.full_height = picture.getHeight();
    spec.channelnames.clear();
    for (const Layer& layer : layers) {
        ChannelInfo channel;
        picture.getRegion().getChannelInfo(layer.channel, channel);
        addChannels(layer, &layer == layers.data() ? "" : std::string(channel.name) + ".", spec);
    }
    spec.nchannels = static_cast<int>(spec.channelnames.size());
    spec.alpha_channel = 3;
    addOriginAttributes(info, spec);
    return spec;
}

bool writeExrRows(Picture& picture, const PictureRect& window, std::span<const Layer> layers,
                  OIIO::ImageOutput& output) {
    const std::size_t stride = output.spec().pixel_bytes(true);
    std::vector<LayerReader> readers;
    for (const Layer& layer : layers)
        readers.emplace_back(picture, window, layer);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(window.x1 - window.x0) * stride);
    for (int y = window.y0; y < window.y1; ++y) {
        std::uint8_t* at = row.data();
        for (std::size_t i = 0; i < layers.size(); ++i) {
            if (!readers[i].read(y, at, stride))
                return false;
            at += static_cast<std::size_t>(layers[i].values()) * layers[i].type.size();
        }
        if (!output.write_scanline(y, 0, OIIO::TypeDesc::UNKNOWN, row.data()))
            return false;
    }
    return true;
}

}  // namespace

bool writeExr(Picture& picture, const PictureInfo& info, PixelDepth depth, const std::string& file,
              OIIO::ImageOutput& output) {
    const OIIO::TypeDesc type =
        depth == PixelDepth::Half ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::FLOAT;
    const std::vector<Layer> layers = layersOf(picture.getRegion(), type);
    const PictureRect whole{0, 0, picture.getWidth(), picture.getHeight()};
    const PictureRect window = info.rect.isEmpty() ? whole : info.rect;
    return output.open(file, exrSpec(picture, window, layers, info)) &&
           writeExrRows(picture, window, layers, output) && output.close();
}

}  // namespace Tarnkit
