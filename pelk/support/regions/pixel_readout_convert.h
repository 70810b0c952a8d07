#pragma once

#include <span>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

/// The conversion behind PKRegionData::getPixels: turns runs of a channel's pixels into a display
/// format. What each pair of channel type and format gives stands at PixelFormat.
///
/// One object serves one read: it lives on the stack of the reading thread. A run goes through the
/// steps colour, mappers, order of components and quantising in small arrays, so that every step is
/// a plain loop over numbers, which the compiler turns into vector instructions; converting pixel
/// by pixel would branch on type and format at each.
class PixelConverter {
public:
    /// Pixels of the longest run: the arrays below then fit into the first-level cache.
    static constexpr int kRun = 256;

    struct Settings {
        int channelType;  ///< of ChannelType: what the pixels are
        int format;       ///< of PixelFormat: what is written
        bool blueFirst;   ///< blue, green, red in formats of 8 and 16 bits; floats stay red first
        bool rawVectors;  ///< vectors and pairs as they are, not shifted to 0 to 1 for display
        std::span<ColorMapper* const>
            mappers;  ///< of colours alone, in this order; null is skipped
    };

    explicit PixelConverter(const Settings& with) : settings(with) {}

    /// Whether a conversion writes the format for pixels of this type. If none does, a read leaves
    /// the caller's buffer as it was, and succeeds all the same.
    static bool writes(int channelType, int format);

    /// Writes `count` pixels, at most kRun, to `out`, which has room for them in the format.
    /// `pixels`: one behind the other, of the channel's type. `alphas`: the pixels of the alpha
    /// channel at the same places, of the type `alphaType`; null makes all of them opaque.
    void convert(const u8* pixels, const u8* alphas, int alphaType, int count, u8* out);

private:
    const Color* makeColors(const u8* pixels, int count);
    const float* makeGrays(const u8* pixels, int count);
    void makeAlphaColors(const u8* pixels, const u8* alphas, int alphaType, int count);
    void mapPixels(const Color* from, int count);
    void write(const float* values, int count, u8* out) const;
    void writeIds(const u8* pixels, int count, u8* out) const;

    // The steps' arrays. Members and not locals, so that a run needn't set them up anew.
    Settings settings;
    Color colors[kRun];
    Color alphaColors[kRun];  // alpha per component, which mappers may change with the colour
    float grays[kRun];
    float ordered[4 * kRun];  // components in the order of the output
};

}  // namespace Tarnkit
