#pragma once

#include <OpenImageIO/imagecache.h>

#include <array>
#include <span>
#include <string>

#include "pelk/base/color.h"

namespace Tarnkit {

/// The transfer function of an image file.
enum class ColorSpace {
    Auto,   ///< sRGB for integer pixels, linear for floats
    SRGB,   ///< sRGB encoded
    Linear  ///< linear as stored
};

/// Decodes an sRGB value, 0 to 1, to linear light: IEC 61966-2-1.
float decodeSRGB(float value);

/// An image file whose pixels are fetched through OpenImageIO's shared cache when a lookup needs
/// them. `open` on one thread; lookups on all threads at once.
class ImageSource {
public:
    /// Opens the file and reads all of it once, so that a truncated file is an error now and not at
    /// a hit, where it could only be black. Returns false with a text that names it; the source is
    /// closed then.
    bool open(const std::string& file, ColorSpace space, std::string& error);

    bool isOpen() const { return handle != nullptr; }
    int getWidth() const { return width; }
    int getHeight() const { return height; }
    /// Writes the pixels of row `y`, from the top, as `sample` gives them in their middles; `row`
    /// has the width of the image, which is open.
    void readRow(int y, std::span<AColor> row) const;
    /// The bilinearly filtered colour at (u, v), linear and premultiplied; (0, 0) is the lower left
    /// corner. `repeat`: tiles, else clamps to the border pixels. Opaque black if closed.
    AColor sample(float u, float v, bool repeat) const;
    /// The first channel of the pixel at (u, v), as the file holds it; 0 if closed.
    float nearest(float u, float v, bool repeat) const;

private:
    static constexpr int kMaxChannels = 4;
    struct Texel {
        float channels[kMaxChannels];
    };

    void takeLayout(const OIIO::ImageSpec& spec, ColorSpace space);
    void fetch(int x0, int y0, int x1, int y1, Texel* texels) const;
    AColor decode(const Texel& texel) const;
    float decodeValue(float value) const;

    OIIO::ImageCache* cache = nullptr;
    OIIO::ImageCache::ImageHandle* handle = nullptr;
    int left = 0, top = 0, width = 0, height = 0;  // the data window
    int channels = 0, colorChannels = 0, alphaChannel = -1;
    bool associatedAlpha = true, srgb = false, bytes = false;
    float unit = 1.0f;  // what the fetched value 1 is in the file
    std::array<float, 256> decodedBytes{};
};

}  // namespace Tarnkit
