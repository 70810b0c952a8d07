#pragma once

#include <atomic>
#include <chrono>
#include <optional>
#include <vector>

#include "pelk/base/types.h"
#include "pelk/host/render/render_workers.h"
#include "pelk/host/render/tile_sums.h"

namespace Tarnkit {

/// When a run of samples is to end early. Asked by one render thread every few samples, so that one
/// pixel with thousands of slow ones does not hold up who waits for the end.
class StopTest {
public:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    /// Never.
    StopTest() = default;
    /// As soon as `flag` is set, the run of `thread` is to end, or the deadline is over. Both live
    /// longer than this.
    StopTest(const std::atomic<bool>& flag, const Worker& thread, const Deadline& until)
        : stop(&flag), worker(&thread), deadline(until) {}

    bool isDue() const {
        if (!stop)
            return false;
        return stop->load(std::memory_order_relaxed) || worker->mustStop() ||
               (deadline && std::chrono::steady_clock::now() >= *deadline);
    }

private:
    const std::atomic<bool>* stop = nullptr;
    const Worker* worker = nullptr;
    Deadline deadline;
};

/// Pixels on a side of the blocks in which a render decides by its noise whether it has enough
/// samples. They lie the same in the whole picture, whatever part of it is rendered.
inline constexpr int kNoiseBlock = 16;

/// How many samples the pixels of a tile are to have by the end of a pass.
struct SampleGoal {
    u32 samples = 0;                    ///< 0: all have what they need
    int columns = 0;                    ///< of blocks in the tile
    std::vector<char> doneBlocks = {};  ///< those that need no more; empty: none is done

    /// For the pixel at `x`, `y` of the tile.
    u32 at(int x, int y) const {
        const int block = y / kNoiseBlock * columns + x / kNoiseBlock;
        return doneBlocks.empty() || !doneBlocks[static_cast<std::size_t>(block)] ? samples : 0;
    }
};

/// When a render has enough samples.
struct SamplePlan {
    u32 samples = 0;       ///< the most of a pixel
    double noise = 0.0;    ///< blocks with less noise than that need no more; 0: all need `samples`
    bool inPasses = true;  ///< whether a tile gets them in passes

    /// What a tile is to get next. With `noise`, the tile begins at the corner of a block.
    SampleGoal next(const TileSums& sums) const;
};

/// The estimated noise of the pixels of a block, which lies in a tile: the root of the mean squared
/// error of their colours, over the block's mean colour, with 0.01 in the place of a darker one.
///
/// The error is told by how far the mean has moved since it had half the samples or more. Samples
/// are stratified, so the error is two to three times smaller than the variance of single samples
/// would have it; halves of a sequence are stratified like the whole. One such move says little
/// about its pixel, and the 256 of a block say enough.
double blockNoise(const TileSums& sums, const PictureRect& block);

/// Where the pass ends in which a pixel gets its sample number `taken`, counted from 0: at 1, 2, 4,
/// 8, 16, 32, and from there on in steps of a half and a third: 48, 64, 96, 128, 192, ... Passes
/// that grow cost next to nothing beside their samples; the finer steps are there for renders that
/// end by their noise, which would take up to twice the samples that they need.
constexpr u32 passEnd(u32 taken) {
    constexpr u32 kFirstFine = 32;
    u32 end = 1;
    while (end <= taken)
        end *= 2;
    const u32 between = end / 4 * 3;
    return end > kFirstFine && between > taken ? between : end;
}

}  // namespace Tarnkit
