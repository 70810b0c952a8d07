#pragma once

#include <cstdint>

#include "pelk/contract/fragment.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// Ids of the faces by which pixels are read.

/// What pixels can be read as. No conversion writes the formats of two, six and eight bytes.
enum PixelFormat : int {
    kPixelGray8 = 100,
    kPixelGray16 = 101,
    kPixelGray32 = 102,  ///< of integer channels only
    kPixel2Bytes = 103,
    kPixelGrayFloat = 104,
    kPixelRGB8 = 200,
    kPixelRGB16 = 201,
    kPixel6Bytes = 202,
    kPixelRGBFloat = 203,
    kPixelRGBA8 = 300,
    kPixelRGBA16 = 301,
    kPixel8Bytes = 302,
    kPixelRGBAFloat = 303,
};

/// Bytes of one pixel; 0 for an unknown format.
constexpr int pixelFormatSize(int format) {
    switch (format) {
        case kPixelGray8:
            return 1;
        case kPixelGray16:
        case kPixel2Bytes:
            return 2;
        case kPixelRGB8:
            return 3;
        case kPixelGray32:
        case kPixelGrayFloat:
        case kPixelRGBA8:
            return 4;
        case kPixelRGB16:
        case kPixel6Bytes:
            return 6;
        case kPixelRGBA16:
        case kPixel8Bytes:
            return 8;
        case kPixelRGBFloat:
            return 12;
        case kPixelRGBAFloat:
            return 16;
    }
    return 0;
}

/// The value of `order` that puts blue first; any other means red first.
inline constexpr int kBlueFirst = 1;

/// The value of `vectorMode` that asks for raw values; any other asks for display values.
inline constexpr int kVectorsRaw = 2;

/// A rectangle inside a region, from the region's own corner. `x1` and `y1` are exclusive.
struct PixelRect {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int width = 0, height = 0;
};

/// A channel as readers see it.
struct ChannelInfo {
    int type = 0;
    const char* name = nullptr;  ///< points into the region
    int alias = -1;
};

/// Gives pixels of single channels out, converted to a display format.
class PixelBufferInterface : public PluginInterface {
public:
    static constexpr InterfaceID<PixelBufferInterface> kInterfaceID{0x7783B785,
                                                                    "EXT_PIXEL_BUFFER_INTERFACE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    virtual int getWidth() = 0;
    virtual int getHeight() = 0;
    /// The full form below, for display values of vectors.
    virtual int getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                          std::int64_t bufferSize, void* buffer, int order, int numMappers,
                          ColorMapper* const* mappers) = 0;
    virtual int getNumChannels() = 0;
    /// 1 and `out` filled, or 0 for an index out of range.
    virtual int getChannelInfo(int index, ChannelInfo& out) = 0;
    /// The last channel with this alias, -1 if there is none.
    virtual int findChannelByAlias(int alias) = 0;
};

class PixelBufferInterface2 : public PixelBufferInterface {
public:
    static constexpr InterfaceID<PixelBufferInterface2> kInterfaceID{0x77CFDC19,
                                                                     "EXT_PIXEL_BUFFER_INTERFACE2"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    using PixelBufferInterface::getPixels;
    /// Reads a rectangle of a channel into `buffer`, row by row without gaps, `bufferSize` bytes
    /// of which may be written. `alphaChannel` gives the alpha, if it is a channel with pixels;
    /// otherwise pixels are opaque. Colours go through the mappers in their order; null entries
    /// are skipped. Returns 1, or 0 with nothing written if the rectangle lies outside or is
    /// empty, the buffer is too small, or the channel has no pixels.
    virtual int getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                          std::int64_t bufferSize, void* buffer, int order, int numMappers,
                          ColorMapper* const* mappers, int vectorMode) = 0;
};

class PixelBufferInterface3 : public PixelBufferInterface2 {
public:
    static constexpr InterfaceID<PixelBufferInterface3> kInterfaceID{0x782AA5B8,
                                                                     "EXT_PIXEL_BUFFER_INTERFACE3"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// The channel's flags; 0 for an index out of range.
    virtual int getChannelFlags(int index) = 0;
};

}  // namespace Tarnkit
