#pragma once

#include <span>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

/// Turns runs of a channel's pixels into a display format, one kind of pixel and format for its
/// whole life. A run is converted step by step in small arrays, so that every step is a plain
/// loop over numbers.
class PixelConverter {
public:
    /// Pixels of the longest run.
    static constexpr int kRun = 256;

    struct Settings {
        int channelType;
        int format;
        bool blueFirst;   ///< in formats of 8 and 16 bits
        bool rawVectors;  ///< vectors and pairs as they are, not as display values
        std::span<ColorMapper* const> mappers;
    };

    explicit PixelConverter(const Settings& with) : settings(with) {}

    /// Whether a conversion writes the format for pixels of this type.
    static bool writes(int channelType, int format);

    /// Writes `count` pixels to `out`. `alphas`: the alpha channel's pixels of the type
    /// `alphaType`, or null.
    void convert(const u8* pixels, const u8* alphas, int alphaType, int count, u8* out);

private:
    const Color* makeColors(const u8* pixels, int count);
    const float* makeGrays(const u8* pixels, int count);
    void makeAlphaColors(const u8* pixels, const u8* alphas, int alphaType, int count);
    void mapPixels(const Color* from, int count);
    void write(const float* values, int count, u8* out) const;
    void writeIds(const u8* pixels, int count, u8* out) const;

    Settings settings;
    Color colors[kRun];
    Color alphaColors[kRun];
    float grays[kRun];
    float ordered[4 * kRun];  // components in the order of the output
};

}  // namespace Tarnkit
