#pragma once

#include <optional>
#include <string>

#include "pelk/host/render/render_setup.h"
#include "pelk/host/render/tile_sums.h"
#include "pelk/host/trace/render_thread.h"
#include "pelk/host/trace/sample_recorder.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

class StopTest;
struct SampleGoal;

/// Samples that were left out: one of NaN would make its whole pixel so.
struct LostSamples {
    /// Not finite, as a whole or in one channel, which is left out then.
    long long dropped = 0;
    const SceneObject* badObject = nullptr;  ///< whose shading gave one of them; null if not known
    long long thrown = 0;                    ///< ended by an exception
    std::string thrownBy;                    ///< the words of the first of these
};

/// The seed of a pixel's random numbers: a hash of its place in the whole picture, so that it does
/// not depend on the tile, the thread or the region that is rendered. `noise` is
/// RenderOptions::noiseSeed.
u32 pixelSeed(int x, int y, u32 noise);

/// Starts a path: writes all ray fields of a context for a camera ray, but for origin, direction
/// and differentials, which the camera writes. Contexts are pooled, so a field that is left out
/// here would show the path before. `seed` and `sample` choose the random numbers of the path.
void startPath(RenderContext& context, HostRenderer& renderer, RenderThread& thread, u32 seed,
               u32 sample);

/// Renders tiles on one thread: adds samples to the sums of pixels, and makes pixels of sums, each
/// the mean of its samples, box filtered, for colour, alpha and all channels. Made and used on a
/// render thread; its region, contexts and fragments serve one tile after the other, so that
/// nothing is allocated per tile. A pixel comes out the same whichever tile it lies in, whatever
/// was rendered before, and in however many steps it gets its samples.
class TileWorker {
public:
    /// `largest`: every tile fits into a rectangle of this size. `threadIndex`: of this thread in
    /// its group, and the index of its pools in materials.
    TileWorker(RenderSetup& setup, const PictureRect& largest, int threadIndex);

    /// Whether the sums of a tile must hold fragments: there are channels beyond colour and alpha.
    bool needsFragments() const { return recorder.has_value(); }

    /// Gives every pixel of a tile so many samples in all; those that have them are left alone.
    /// Once `stop` says so the sums stay as they are by then: whole samples, though not everywhere
    /// the same number. Returns the number of samples taken.
    long long sample(TileSums& sums, const SampleGoal& goal, const StopTest& stop);

    /// Makes pixels of the sums where a tile overlaps `shown`. They stand in the region until the
    /// next call, and are the caller's to copy before that. A pixel without samples is black.
    void develop(const TileSums& sums, const PictureRect& shown);
    PKRegionData& getRegion() { return region; }

    /// What was lost since the last call.
    LostSamples takeLost();

private:
    void samplePixel(int x, int y, u32 goal, PixelSums& sums, FragmentList& fragments,
                     const StopTest& stop);
    bool traceSample(RenderContext& context, int x, int y, u32 seed, u32 sample);
    bool renderSample(RenderContext& context, int x, int y, u32 seed, u32 sample);
    void developPixel(int x, int y, const PixelSums& sums, FragmentList& fragments);

    HostRenderer& renderer;
    const RenderSetup& setup;
    RenderThread thread;
    PKRegionData region;
    std::optional<SampleRecorder> recorder;  // if there are channels beyond colour and alpha
    std::vector<u8> packed;                  // of the tile in work, while it is packed anew
    LostSamples lost;
};

}  // namespace Tarnkit
