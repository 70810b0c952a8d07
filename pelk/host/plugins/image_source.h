#pragma once

#include <OpenImageIO/imagecache.h>

#include <array>
#include <string>

#include "pelk/base/color.h"

namespace Tarnkit {

/// How the numbers of an image file stand for light.
enum class ColorSpace {
    Auto,   ///< whole numbers by the sRGB curve, fractions linear
    SRGB,   ///< by the sRGB curve
    Linear  ///< as they are
};

/// The sRGB curve's way back: the linear light of an encoded value from 0 to 1.
float decodeSRGB(float value);

/// An image file whose pixels are fetched when they are needed, from all threads at once.
class ImageSource {
public:
    /// Opens the file and reads it through once, so that one that is cut short is known now.
    /// Returns false with a text that names it; the source is closed then.
    bool open(const std::string& file, ColorSpace space, std::string& error);

    bool isOpen() const { return handle != nullptr; }
    /// The colour at (u, v), linear and multiplied by its alpha, blended from the four pixels
    /// around. v runs upward. `repeat` false: the border goes on outside. Black if closed.
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
    int left = 0, top = 0, width = 0, height = 0;  // of the pixels that there are
    int channels = 0, colorChannels = 0, alphaChannel = -1;
    bool associatedAlpha = true, srgb = false, bytes = false;
    float unit = 1.0f;  // what the fetched value 1 is in the file
    std::array<float, 256> decodedBytes{};
};

}  // namespace Tarnkit
