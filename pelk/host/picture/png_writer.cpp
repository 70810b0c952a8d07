#include "pelk/host/picture/png_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "pelk/contract/channel_alias.h"
#include "pelk/host/picture/origin_attributes.h"

namespace Tarnkit {

namespace {

float encodeSRGB(float value) {
    return value <= 0.0031308f ? value * 12.92f : 1.055f * std::pow(value, 1.0f / 2.4f) - 0.055f;
}

/// Colour for a display: divided by its alpha, and encoded.
class DisplayMapper final : public ColorMapper {
public:
    void mapColor(Color& out, const Color& in) override {
        out = {encodeSRGB(in.r), encodeSRGB(in.g), encodeSRGB(in.b)};
    }
    void mapPixel(Color& color, Color& alpha, int) override {
        const float covered = mean(alpha);
        mapColor(color, covered > 0.0f ? color * (1.0f / covered) : Color(0));
    }
    void beginMapping(int) override {}
    void endMapping(int) override {}
    int mapsBackground() override { return 1; }
};

/// Rows of a colour channel for a display, 8 bits a channel.
class DisplayReader {
public:
    DisplayReader(Picture& picture_, int channel_, int format_)
        : picture(picture_), channel(channel_), format(format_) {}

    bool read(int y, std::vector<std::uint8_t>& row) {
        const int width = picture.getWidth();
        row.resize(static_cast<std::size_t>(width) * pixelFormatSize(format));
        const PixelRect rect{0, y, width, y + 1, width, 1};
        ColorMapper* const mappers[] = {&mapper};
        const int alpha = format == kPixelRGBA8 ? kAlphaChannel : -1;
        return picture.getRegion().getPixels(channel, alpha, rect, format,
                                             static_cast<std::int64_t>(row.size()), row.data(), 0,
                                             1, mappers);
    }

private:
    Picture& picture;
    const int channel, format;
    DisplayMapper mapper;
};

/// Whether there are pixels without alpha that show something.
bool showsSurroundings(Picture& picture) {
    const int width = picture.getWidth();
    std::vector<AColor> row(static_cast<std::size_t>(width));
    const auto shows = [](const AColor& pixel) {
        return !(pixel.alpha > 0.0f) &&
               std::max({pixel.color.r, pixel.color.g, pixel.color.b}) > 0.0f;
    };
    for (int y = 0; y < picture.getHeight(); ++y) {
        const PixelRect rect{0, y, width, y + 1, width, 1};
        picture.getRegion().getPixels(kBeautyChannel, kAlphaChannel, rect, kPixelRGBAFloat,
                                      static_cast<std::int64_t>(row.size() * sizeof(AColor)),
                                      row.data(), 0, 0, nullptr);
        if (std::any_of(row.begin(), row.end(), shows))
            return true;
    }
    return false;
}

}  // namespace

bool writePng(Picture& picture, const PictureInfo& info, const std::string& file,
              OIIO::ImageOutput& output) {
    const bool opaque = info.pngChannel != kBeautyChannel || showsSurroundings(picture);
    const int format = opaque ? kPixelRGB8 : kPixelRGBA8;
    OIIO::ImageSpec spec(picture.getWidth(), picture.getHeight(), pixelFormatSize(format),
                         OIIO::TypeDesc::UINT8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    spec.attribute("oiio:ColorSpace", "sRGB");
    addOriginAttributes(info, spec);
    if (!output.open(file, spec))
        return false;
    DisplayReader reader(picture, info.pngChannel, format);
    std::vector<std::uint8_t> row;
    for (int y = 0; y < picture.getHeight(); ++y) {
        if (!reader.read(y, row) || !output.write_scanline(y, 0, OIIO::TypeDesc::UINT8, row.data()))
            return false;
    }
    return output.close();
}

}  // namespace Tarnkit
