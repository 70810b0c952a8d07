#pragma once

#include <optional>

#include "pelk/host/render/render_setup.h"
#include "pelk/host/trace/render_thread.h"
#include "pelk/host/trace/sample_recorder.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

/// Where the random numbers of a pixel's paths begin.
u32 pixelSeed(int x, int y);

/// Writes all ray fields of a camera context that the camera leaves alone.
void startPath(RenderContext& context, HostRenderer& renderer, RenderThread& thread, u32 seed,
               u32 sample);

/// Renders tiles on one thread. Its region, contexts and fragments serve one tile after the other.
/// A pixel comes out the same whichever tile it lies in and whatever was rendered before.
class TileWorker {
public:
    /// `largest`: no tile has more pixels.
    TileWorker(RenderSetup& setup, int samples, const PictureRect& largest, int threadIndex);

    /// Renders the pixels of a rectangle of the picture. They stand in the region until the next.
    void render(const PictureRect& tile);
    PKRegionData& getRegion() { return region; }

    /// Samples, or their part in a channel, that were left out since they weren't finite.
    long long getDropped() const;
    /// The object that made one of them, null if it is not known.
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
