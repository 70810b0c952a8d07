#pragma once

#include <cstdint>

#include "pelk/contract/fragment.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// What pixels can be read as. The tens of the code are the same in gray, RGB and RGBA: 0 is 8
/// bits, 1 is 16 bits, 3 (4 in gray) is float. Components stand in the order red, green, blue,
/// alpha, numbers in the byte order of the machine, nothing is aligned.
///
/// Quantising clamps to 0 to 1, scales by 256 or 65,536, takes the floor and limits to 255 or
/// 65,535; it applies no display curve, which is a mapper's business. Floats are written unclamped,
/// so values above 1, infinities and what is not a number reach the reader.
///
/// What a pixel shows, by the type of its channel:
/// - Float `v`: gray `v`, colour (v, v, v).
/// - Color: the colour after the mappers; gray is the mean of the three.
/// - Float2 (x, y): for display red x + 0.5, green y + 0.5, blue 0, gray (x + y) / 2 + 0.5. In
///   float formats kVectorsRaw gives (x, y, 0) and x + y; gray in floats lacks the 0.5 in any case.
/// - Int, an id: raw in gray, as many low bits as fit, or as a float. In RGB a colour that sets
///   neighbouring ids far apart: the low 24 bits, every third one to a component, lowest bit first
///   into the component's highest, over 256. So id 1 is a red of 0.5, id 2 green, id 4 blue.
/// - Vector: for display p / 2 + 0.5, from -1 to 1 into 0 to 1; with kVectorsRaw as it is.
/// - AColor: as a colour, with an alpha of its own in the place of the alpha channel's.
enum PixelFormat : int {
    kPixelGray8 = 100,
    kPixelGray16 = 101,
    kPixelGray32 = 102,  ///< all 32 bits of ids; of other types nothing is written
    kPixel2Bytes = 103,  ///< has a size only, for hosts that fill it: nothing is written
    kPixelGrayFloat = 104,
    kPixelRGB8 = 200,
    kPixelRGB16 = 201,
    kPixel6Bytes = 202,  ///< has a size only
    kPixelRGBFloat = 203,
    kPixelRGBA8 = 300,
    kPixelRGBA16 = 301,
    kPixel8Bytes = 302,  ///< has a size only
    kPixelRGBAFloat = 303,
};

/// Bytes of one pixel, by which callers size their buffers; 0 for an unknown format.
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

/// The value of `order` that puts blue first and red third, as some displays want it, in RGB and
/// RGBA of 8 and 16 bits; any other means red first. Float formats are red first whatever it says.
inline constexpr int kBlueFirst = 1;

/// The value of `vectorMode` that asks for raw values, for files; any other asks for display
/// values, to look at normals and offsets on a screen.
inline constexpr int kVectorsRaw = 2;

/// A rectangle of pixels inside a region. Unlike the region's own rectangle, which lies in the
/// picture, it is counted from the region's upper left corner: 0 is the first column and the top
/// row.
struct PixelRect {
    int x0 = 0, y0 = 0;  ///< the first pixel, inside
    /// Exclusive: the first column and row beyond. Only tested against the region.
    int x1 = 0, y1 = 0;
    /// Pixels that are read, from (x0, y0) on. They say how the buffer is laid out: pixel (x, y) of
    /// the rectangle is element `x + y * width`.
    int width = 0, height = 0;
};

/// A channel as readers see it.
struct ChannelInfo {
    int type = 0;                ///< of ChannelType
    const char* name = nullptr;  ///< points into the region: good until its channels change
    int alias = -1;              ///< of ChannelAlias; -1 without one
};

/// Gives pixels of single channels out, converted to a display format. The way in which picture
/// writers and display windows read a region without knowing its class: they ask a region's plug-in
/// for this interface.
///
/// Any number of threads may read at once, while none writes pixels or changes channels. A mapper
/// is called by the reading thread, so one that two threads share has to allow for it.
class PixelBufferInterface : public PluginInterface {
public:
    static constexpr InterfaceID<PixelBufferInterface> kInterfaceID{0x7783B785,
                                                                    "EXT_PIXEL_BUFFER_INTERFACE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// The region's extent in pixels; 0 or less for an empty one.
    virtual int getWidth() = 0;
    virtual int getHeight() = 0;
    /// The full form below, for display values of vectors.
    virtual int getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                          std::int64_t bufferSize, void* buffer, int order, int numMappers,
                          ColorMapper* const* mappers) = 0;
    virtual int getNumChannels() = 0;
    /// 1 and `out` filled, or 0 for an index out of range, with `out` as it was.
    virtual int getChannelInfo(int index, ChannelInfo& out) = 0;
    /// The index of a channel with this alias, -1 if there is none. The last of several answers,
    /// as it does where materials look for their channels by alias.
    virtual int findChannelByAlias(int alias) = 0;
};

/// The second generation: can read vectors raw. Through the first one alone a reader gets them
/// shifted for display, which is wrong for a file.
class PixelBufferInterface2 : public PixelBufferInterface {
public:
    static constexpr InterfaceID<PixelBufferInterface2> kInterfaceID{0x77CFDC19,
                                                                     "EXT_PIXEL_BUFFER_INTERFACE2"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    using PixelBufferInterface::getPixels;
    /// Reads a rectangle of a channel into `buffer`, row by row from the top without gaps.
    ///
    /// `channel`: what is read. `alphaChannel`: an index whose pixels give the alpha of formats
    /// that have one, as the mean of their three components; -1, or a channel without pixels or
    /// without a colour (ids, pairs), makes all pixels opaque. `format`: of PixelFormat.
    /// `bufferSize`: the bytes that may be written from `buffer` on. `order`: kBlueFirst or
    /// anything else. `vectorMode`: kVectorsRaw or anything else.
    ///
    /// `mappers`: `numMappers` colour mappers, not owned; null entries are skipped, and the array
    /// may be null without any. Each pixel of a colour channel goes through mapPixel of all of them
    /// in their order, together with its alpha as a colour, between one beginMapping and one
    /// endMapping of each, all with the flag 1. Values are premultiplied: a mapper for a display
    /// divides by alpha itself. Not asked are the mappers of kAliasImageAlpha, since coverage is no
    /// colour, of channels with kChannelNoColorMapping, and of all types that aren't colours.
    ///
    /// Returns 1. Returns 0 with nothing written if the rectangle is empty or reaches out of the
    /// region, the buffer is null or too small, the channel is out of range or has no pixels. Also
    /// returns 1, with nothing written, for a format that can't be written from the channel's type
    /// (see PixelFormat).
    virtual int getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                          std::int64_t bufferSize, void* buffer, int order, int numMappers,
                          ColorMapper* const* mappers, int vectorMode) = 0;
};

/// The third generation: adds the flags of channels.
class PixelBufferInterface3 : public PixelBufferInterface2 {
public:
    static constexpr InterfaceID<PixelBufferInterface3> kInterfaceID{0x782AA5B8,
                                                                     "EXT_PIXEL_BUFFER_INTERFACE3"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// The channel's flags, of ChannelFlags; 0 for an index out of range.
    virtual int getChannelFlags(int index) = 0;
};

}  // namespace Tarnkit
