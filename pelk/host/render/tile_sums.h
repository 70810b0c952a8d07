#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/contract/fragment.h"
#include "pelk/host/render/tile_grid.h"

namespace Tarnkit {

class PKRegionData;

/// A sum of many small colours. In double: the float that a million samples have summed to would no
/// longer notice one more.
struct ColorSum {
    double r = 0.0, g = 0.0, b = 0.0;

    void add(const Color& c) {
        r += c.r;
        g += c.g;
        b += c.b;
    }
    Color times(double scale) const {
        return {static_cast<float>(r * scale), static_cast<float>(g * scale),
                static_cast<float>(b * scale)};
    }
};

/// What the samples of one pixel have come to. Unweighted sums, in the order of the samples: the
/// same bits whether a pixel gets its samples at once, in passes, or in several runs.
struct PixelSums {
    ColorSum color, alpha;  ///< of the samples that were kept
    /// The mean colour as it was when the number of samples was last a power of two, and how many
    /// of them were kept. What the mean has moved by since then tells how noisy it still is.
    Color former;
    u32 formerKept = 0;
    u32 tried = 0;  ///< samples taken; the next one has this number
    u32 kept = 0;   ///< those whose colour and alpha were finite

    Color mean() const { return color.times(1.0 / std::max(kept, 1u)); }

    /// Counts a sample that is about to be taken, and returns its number.
    u32 begin() {
        if ((tried & (tried - 1)) == 0) {
            former = mean();
            formerKept = kept;
        }
        return tried++;
    }
    /// Adds the sample that was counted last.
    void add(const Color& sampleColor, const Color& sampleAlpha) {
        color.add(sampleColor);
        alpha.add(sampleAlpha);
        ++kept;
    }
};

/// The least and the most samples that any of several pixels has.
struct SampleRange {
    u32 least = ~0u, most = 0;

    void add(const SampleRange& other) {
        least = std::min(least, other.least);
        most = std::max(most, other.most);
    }
};

/// The sums of a rectangle of pixels, row by row, between two passes. Where render channels beyond
/// beauty and alpha are wanted, each pixel also has a fragment for each object that was seen first
/// in it, the sum of that object's samples; they lie packed one behind the other, since most pixels
/// see one object and some see dozens. Copied freely; used by one thread at a time.
struct TileSums {
    TileSums() = default;
    /// Without any samples. `hasFragments`: whether fragments are kept.
    TileSums(const PictureRect& tile, bool hasFragments)
        : rect(tile),
          pixels(static_cast<std::size_t>(tile.numPixels())),
          fragmentBytes(hasFragments ? pixels.size() : 0) {}

    SampleRange getRange() const {
        SampleRange range;
        for (const PixelSums& pixel : pixels)
            range.add({pixel.tried, pixel.tried});
        return range;
    }

    /// The samples of all pixels together.
    long long numSamples() const {
        long long sum = 0;
        for (const PixelSums& pixel : pixels)
            sum += pixel.tried;
        return sum;
    }

    PictureRect rect;
    std::vector<PixelSums> pixels;
    std::vector<u32> fragmentBytes;  ///< of each pixel; empty if fragments are not kept
    std::vector<u8> fragments;       ///< of all pixels, in their order
};

/// Bytes of one packed fragment of a region whose fragments have `dataSize` bytes of slots.
std::size_t packedFragmentSize(int dataSize);

/// Appends the fragments of a list, which belong to `region`, in their order to `bytes`. Returns
/// how many bytes these are.
u32 packFragments(const FragmentList& list, PKRegionData& region, std::vector<u8>& bytes);

/// Makes the fragments of the pixels of a tile again, pixel by pixel in their order. The sums must
/// not change between two reads.
class FragmentReader {
public:
    explicit FragmentReader(const TileSums& tile) : sums(tile) {}

    /// Appends what packFragments wrote of the next pixel, number `index` of the tile, to a list of
    /// `region`, which has the same channels as the one that was packed from.
    void read(std::size_t index, PKRegionData& region, FragmentList& list);

private:
    const TileSums& sums;
    std::size_t place = 0;  // of the next pixel's bytes
};

}  // namespace Tarnkit
