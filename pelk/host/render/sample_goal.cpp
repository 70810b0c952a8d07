#include "pelk/host/render/sample_goal.h"

#include <algorithm>
#include <cmath>

namespace Tarnkit {

namespace {

/// Before that the estimate is too much a matter of chance.
constexpr u32 kLeastForNoise = 16;
/// The squared error of stratified samples as a share of what independent ones would have after the
/// same move of the mean: theirs falls with n^-1, and this one, as measured, with about n^-1.2.
constexpr double kStratified = 0.78;
/// The mean colour that darker blocks are measured by, or a black one would never have enough.
constexpr double kDarkest = 0.01;

/// Calls `visit` with each pixel of a block.
template <class Visit>
void forEachPixel(const TileSums& sums, const PictureRect& block, Visit visit) {
    for (int y = block.y0; y < block.y1; ++y) {
        const int row = (y - sums.rect.y0) * sums.rect.width() - sums.rect.x0;
        for (int x = block.x0; x < block.x1; ++x)
            visit(sums.pixels[static_cast<std::size_t>(row + x)]);
    }
}

/// Sum of the squared errors of the three channels, as expected from the last move of the mean.
double squaredError(const PixelSums& pixel, const Color& mean) {
    if (pixel.formerKept == 0 || pixel.kept <= pixel.formerKept)
        return 0.0;
    // The mean of n independent samples differs from that of the first m of them by
    // s^2 / m - s^2 / n in the square, and from the truth by s^2 / n.
    const double n = pixel.kept, m = pixel.formerKept;
    const Color move = mean - pixel.former;
    const double r{move.r}, g{move.g}, b{move.b};
    return (r * r + g * g + b * b) * (m / (n - m)) * kStratified;
}

}  // namespace

double blockNoise(const TileSums& sums, const PictureRect& block) {
    double error = 0.0, light = 0.0;
    forEachPixel(sums, block, [&](const PixelSums& pixel) {
        const Color mean = pixel.mean();
        error += squaredError(pixel, mean);
        light +=
            static_cast<double>(mean.r) + static_cast<double>(mean.g) + static_cast<double>(mean.b);
    });
    const double values = 3.0 * static_cast<double>(block.numPixels());
    return std::sqrt(error / values) / std::max(light / values, kDarkest);
}

SampleGoal SamplePlan::next(const TileSums& sums) const {
    if (noise <= 0.0) {
        const u32 least = sums.getRange().least;
        if (least >= samples)
            return {};
        return {.samples = inPasses ? std::min(passEnd(least), samples) : samples};
    }
    const TileGrid blocks(sums.rect, kNoiseBlock);
    SampleGoal goal{.columns = blocks.getColumns()};
    for (int i = 0; i < blocks.size(); ++i) {
        SampleRange range;
        forEachPixel(sums, blocks.at(i), [&](const PixelSums& pixel) {
            range.add({pixel.tried, pixel.tried});
        });
        // Asked at the ends of passes alone, a block gets the same samples in any order.
        const bool decides = range.least >= kLeastForNoise && range.least == range.most &&
                             passEnd(range.least - 1) == range.least;
        const bool done =
            range.least >= samples || (decides && blockNoise(sums, blocks.at(i)) <= noise);
        goal.doneBlocks.push_back(done);
        if (done)
            continue;
        const u32 end = std::min(passEnd(range.least), samples);
        goal.samples = goal.samples == 0 ? end : std::min(goal.samples, end);
    }
    return goal;
}

}  // namespace Tarnkit
