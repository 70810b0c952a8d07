#pragma once

#include <optional>

#include "pelk/host/render/render_setup.h"
#include "pelk/host/trace/render_thread.h"
#include "pelk/host/trace/sample_recorder.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

/// The seed of a pixel's random numbers: a hash of its place in the whole picture, so that it does
/// not depend on the tile, the thread or the region that is rendered.
u32 pixelSeed(int x, int y);

/// Starts a path: writes all ray fields of a context for a camera ray, but for origin, direction
/// and differentials, which the camera writes. Contexts are pooled, so a field that is left out
/// here would show the path before. `seed` and `sample` choose the random numbers of the path.
void startPath(RenderContext& context, HostRenderer& renderer, RenderThread& thread, u32 seed,
               u32 sample);

/// Renders tiles on one thread: for each pixel the mean of its samples, box filtered, for colour,
/// alpha and all channels. Made and used on a render thread; its region, contexts and fragments
/// serve one tile after the other, so that nothing is allocated per tile. A pixel comes out the
/// same whichever tile it lies in and whatever was rendered before.
class TileWorker {
public:
    /// `samples`: per pixel, above 0. `largest`: every tile fits into a rectangle of this size.
    /// `threadIndex`: of this thread in its group, and the index of its pools in materials.
    TileWorker(RenderSetup& setup, int samples, const PictureRect& largest, int threadIndex);

    /// Renders the pixels of a rectangle of the picture. They stand in the region until the next
    /// call, and are the caller's to copy before that.
    void render(const PictureRect& tile);
    PKRegionData& getRegion() { return region; }

    /// Samples, or their share in one channel, that were left out since they were NaN or infinite:
    /// one such sample would otherwise make its whole pixel so.
    long long getDropped() const;
    /// An object whose shading gave one of them, null if it is not known.
    const SceneObject* getBadObject() const;

private:
    void renderPixel(int x, int y);
    bool renderSample(RenderContext& context, int x, int y, u32 seed, u32 sample);

    HostRenderer& renderer;
    const RenderSetup& setup;
    const int samples;
    RenderThread thread;
    PKRegionData region;
    std::optional<SampleRecorder> recorder;  // if there are channels beyond colour and alpha
    long long dropped = 0;
};

}  // namespace Tarnkit
