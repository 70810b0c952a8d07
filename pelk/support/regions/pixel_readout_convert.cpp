#include "pelk/support/regions/pixel_readout_convert.h"

#include <algorithm>
#include <cstring>

#include "pelk/base/vector.h"
#include "pelk/support/regions/pixel_readout.h"

namespace Tarnkit {

namespace {

enum class Depth { bits8, bits16, real };

Depth depthOf(int format) {
    switch (format) {
        case kPixelGrayFloat:
        case kPixelRGBFloat:
        case kPixelRGBAFloat:
            return Depth::real;
        case kPixelGray16:
        case kPixelRGB16:
        case kPixelRGBA16:
            return Depth::bits16;
        default:
            return Depth::bits8;
    }
}

bool isGray(int format) {
    return format < kPixelRGB8;
}

bool hasAlpha(int format) {
    return format >= kPixelRGBA8;
}

/// Quantises to `Number`: the range 0 to 1 is cut into steps of equal width. What is not a
/// number counts as 0. Scaled before it is clamped: a power of two makes no difference in the
/// result, and with the comparisons side by side the loop runs on vectors.
template <class Number>
void quantise(const float* __restrict from, int count, u8* __restrict out) {
    constexpr float kSteps = sizeof(Number) == 1 ? 256.0f : 65536.0f;
    for (int i = 0; i < count; ++i) {
        const float scaled = from[i] * kSteps;
        const float raised = scaled > 0.0f ? scaled : 0.0f;
        const float limited = raised < kSteps - 1.0f ? raised : kSteps - 1.0f;
        const Number number = static_cast<Number>(static_cast<int>(limited));
        std::memcpy(out + i * sizeof number, &number, sizeof number);
    }
}

void grayOf(const Color* __restrict from, int count, float* __restrict out) {
    for (int i = 0; i < count; ++i)
        out[i] = mean(from[i]);
}

/// One component of an id's colour: bits 0, 3, 6 to 21 of `n` become bits 7 to 0, over 256. Gathers
/// the eight bits by folding, then turns their order around.
float spreadBits(u32 n) {
    n &= 0x249249;
    n = (n | n >> 2) & 0x0C30C3;
    n = (n | n >> 4) & 0x00F00F;
    n = (n | n >> 8) & 0x0000FF;
    n = (n & 0x0F) << 4 | n >> 4;
    n = (n & 0x33) << 2 | (n >> 2 & 0x33);
    n = (n & 0x55) << 1 | (n >> 1 & 0x55);
    return static_cast<float>(static_cast<int>(n)) * 0.00390625f;
}

/// A colour for an id. Neighbours differ in their lowest bits, which are the colour's highest here,
/// so they are told apart at a glance.
Color colorOfId(u32 id) {
    return {spreadBits(id), spreadBits(id >> 1), spreadBits(id >> 2)};
}

template <class Value>
const Value* as(const u8* pixels) {
    return reinterpret_cast<const Value*>(pixels);
}

}  // namespace

bool PixelConverter::writes(int channelType, int format) {
    switch (format) {
        case kPixelGray32:
            return channelType == kChannelInt;
        case kPixel2Bytes:
        case kPixel6Bytes:
        case kPixel8Bytes:
            return false;
        default:
            return pixelFormatSize(format) > 0;
    }
}

void PixelConverter::convert(const u8* pixels, const u8* alphas, int alphaType, int count,
                             u8* out) {
    const int format = settings.format;
    if (settings.channelType == kChannelInt && isGray(format) && format != kPixelGrayFloat)
        return writeIds(pixels, count, out);
    const bool mapped = !settings.mappers.empty();
    if (mapped || hasAlpha(format))
        makeAlphaColors(pixels, alphas, alphaType, count);
    if (isGray(format))
        return write(makeGrays(pixels, count), count, out);

    const Color* shown = makeColors(pixels, count);
    const bool swap = settings.blueFirst && depthOf(format) != Depth::real;
    if (!hasAlpha(format) && !swap)
        return write(&shown->r, 3 * count, out);
    const int stride = hasAlpha(format) ? 4 : 3;
    for (int i = 0; i < count; ++i) {
        float* to = ordered + stride * i;
        to[0] = swap ? shown[i].b : shown[i].r;
        to[1] = shown[i].g;
        to[2] = swap ? shown[i].r : shown[i].b;
        if (stride == 4)
            to[3] = mean(alphaColors[i]);
    }
    write(ordered, stride * count, out);
}

/// The colours that the pixels show; mapped ones stand in `colors` with their `alphaColors`.
const Color* PixelConverter::makeColors(const u8* pixels, int count) {
    const bool raw = settings.rawVectors;
    switch (settings.channelType) {
        case kChannelFloat:
            for (int i = 0; i < count; ++i)
                colors[i] = Color(as<float>(pixels)[i]);
            return colors;
        case kChannelFloat2: {
            const float shift = raw && depthOf(settings.format) == Depth::real ? 0.0f : 0.5f;
            for (int i = 0; i < count; ++i) {
                const float* pair = as<float>(pixels) + 2 * i;
                colors[i] = Color(pair[0] + shift, pair[1] + shift, 0.0f);
            }
            return colors;
        }
        case kChannelInt:
            for (int i = 0; i < count; ++i)
                colors[i] = colorOfId(as<u32>(pixels)[i]);
            return colors;
        case kChannelVector:
            if (raw)
                return as<Color>(pixels);
            for (int i = 0; i < count; ++i)
                colors[i] = as<Color>(pixels)[i] * 0.5f + Color(0.5f);
            return colors;
        case kChannelAColor:
            for (int i = 0; i < count; ++i)
                colors[i] = as<AColor>(pixels)[i].color;
            if (!settings.mappers.empty())
                mapPixels(colors, count);
            return colors;
        default:
            if (settings.mappers.empty())
                return as<Color>(pixels);
            mapPixels(as<Color>(pixels), count);
            return colors;
    }
}

/// What the pixels show in gray.
const float* PixelConverter::makeGrays(const u8* pixels, int count) {
    const float* values = as<float>(pixels);
    switch (settings.channelType) {
        case kChannelFloat:
            return values;
        case kChannelFloat2: {
            const bool real = depthOf(settings.format) == Depth::real;
            const float scale = real && settings.rawVectors ? 1.0f : 0.5f;
            const float shift = real ? 0.0f : 0.5f;
            for (int i = 0; i < count; ++i)
                grays[i] = (values[2 * i] + values[2 * i + 1]) * scale + shift;
            return grays;
        }
        case kChannelInt:
            for (int i = 0; i < count; ++i)
                grays[i] = static_cast<float>(as<int>(pixels)[i]);
            return grays;
        default:
            grayOf(makeColors(pixels, count), count, grays);
            return grays;
    }
}

/// The pixels' alphas as colours. A pixel with an alpha of its own needs no alpha channel; without
/// either it is opaque.
void PixelConverter::makeAlphaColors(const u8* pixels, const u8* alphas, int alphaType, int count) {
    if (settings.channelType == kChannelAColor) {
        for (int i = 0; i < count; ++i)
            alphaColors[i] = Color(as<AColor>(pixels)[i].alpha);
    } else if (!alphas) {
        std::fill_n(alphaColors, count, Color(1.0f));
    } else if (alphaType == kChannelFloat) {
        for (int i = 0; i < count; ++i)
            alphaColors[i] = Color(as<float>(alphas)[i]);
    } else if (alphaType == kChannelAColor) {
        for (int i = 0; i < count; ++i)
            alphaColors[i] = as<AColor>(alphas)[i].color;
    } else {
        std::copy_n(as<Color>(alphas), count, alphaColors);
    }
}

/// Copies the pixels to `colors`, and takes each through all mappers before the next.
void PixelConverter::mapPixels(const Color* from, int count) {
    for (int i = 0; i < count; ++i) {
        colors[i] = from[i];
        for (ColorMapper* mapper : settings.mappers) {
            if (mapper)
                mapper->mapPixel(colors[i], alphaColors[i], 1);
        }
    }
}

void PixelConverter::write(const float* values, int count, u8* out) const {
    switch (depthOf(settings.format)) {
        case Depth::bits8:
            return quantise<u8>(values, count, out);
        case Depth::bits16:
            return quantise<u16>(values, count, out);
        case Depth::real:
            std::memcpy(out, values, count * sizeof(float));
    }
}

/// Ids as they are, as many of their low bits as the format holds.
void PixelConverter::writeIds(const u8* pixels, int count, u8* out) const {
    const u32* ids = as<u32>(pixels);
    if (settings.format == kPixelGray32) {
        std::memcpy(out, ids, count * sizeof(u32));
        return;
    }
    for (int i = 0; i < count; ++i) {
        if (settings.format == kPixelGray8) {
            out[i] = static_cast<u8>(ids[i]);
        } else {
            const u16 low = static_cast<u16>(ids[i]);
            std::memcpy(out + 2 * i, &low, sizeof low);
        }
    }
}

}  // namespace Tarnkit
