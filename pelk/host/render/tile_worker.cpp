#include "pelk/host/render/tile_worker.h"

#include <algorithm>
#include <limits>

#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

u32 pixelSeed(int x, int y) {
    return hash32(static_cast<u32>(x) + hash32(static_cast<u32>(y) + 0x51ed270bu));
}

void startPath(RenderContext& c, HostRenderer& renderer, RenderThread& thread, u32 seed,
               u32 sample) {
    c.threadData = &thread;
    c.renderer = &renderer;
    c.parentContext = nullptr;
    c.fragmentList = nullptr;
    c.rayMinT = 0.0;
    c.rayMaxT = kRayFar;
    c.time = renderer.frameData.frameTime;
    c.rayType = kRayCamera;
    c.traceDepth = c.giDepth = 0;
    c.parentHitLink = 0;
    c.rayClipDistance = static_cast<float>(kRayFar);
    c.rayContribution = 1.0f;
    c.rayWeight = c.rayWeight2 = c.spawnWeight = Color(1);
    c.environment = nullptr;
    c.environmentPriority = std::numeric_limits<int>::min();
    c.skipObject = c.skipTriangle = RenderContext::kNone;
    c.bsdfDensity = -1.0f;
    c.isIndirectDiffuse = false;
    c.resultScale = 1.0f;
    c.hidden = {};
    c.pathSeed = seed;
    c.sampleIndex = sample;
    c.numVolumes = 0;
    c.resultFragment = thread.plainFragment;
    if (thread.recorder)
        c.resultFragment = thread.recorder->nextSurfaceFragment();
}

namespace {

/// A sum of many small colours. In double: the float that a million samples have summed to would no
/// longer notice one more.
class ColorSum {
public:
    void add(const Color& c) {
        r += c.r;
        g += c.g;
        b += c.b;
    }
    Color times(double scale) const {
        return {static_cast<float>(r * scale), static_cast<float>(g * scale),
                static_cast<float>(b * scale)};
    }

private:
    double r = 0.0, g = 0.0, b = 0.0;
};

}  // namespace

TileWorker::TileWorker(RenderSetup& setup_, int samples_, const PictureRect& largest,
                       int threadIndex)
    : renderer(setup_.renderer),
      setup(setup_),
      samples(samples_),
      thread(setup_.renderer, threadIndex) {
    region.setChannels(setup.channels.getList());
    // Memory for the largest tile is taken here, and the region keeps it for the smaller ones.
    region.setRect(largest.x0, largest.y0, largest.x1, largest.y1);
    region.beginRendering();
    if (setup.channels.hasMore()) {
        recorder.emplace(region);
        thread.recorder = &*recorder;
    }
}

void TileWorker::render(const PictureRect& tile) {
    region.setRect(tile.x0, tile.y0, tile.x1, tile.y1);
    for (int y = tile.y0; y < tile.y1; ++y) {
        for (int x = tile.x0; x < tile.x1; ++x)
            renderPixel(x, y);
    }
}

void TileWorker::renderPixel(int x, int y) {
    const u32 seed = pixelSeed(x, y);
    FragmentList pixel{&region};
    auto* const total = static_cast<PKFragment*>(pixel.getFragment(kTagTotal));
    if (recorder)
        recorder->beginPixel();
    else
        thread.plainFragment = static_cast<PKFragment*>(region.newFragment());
    ColorSum color, alpha;
    int kept = 0;
    RenderContext& c = *thread.takeContext();
    for (int sample = 0; sample < samples; ++sample) {
        if (!renderSample(c, x, y, seed, static_cast<u32>(sample))) {
            ++dropped;
            continue;
        }
        ++kept;
        color.add(c.traceResult);
        alpha.add(c.traceAlpha);
        if (recorder)
            recorder->endSample(c, 1.0f / static_cast<float>(samples), pixel);
    }
    c.releaseContext();
    // Each sample came in with the weight 1 / samples; with some dropped, the mean is over the
    // rest.
    if (recorder && kept < samples)
        pixel.multiplyAll(static_cast<float>(samples) / static_cast<float>(std::max(kept, 1)));
    if (recorder)
        recorder->endPixel(pixel);
    const double share = 1.0 / std::max(kept, 1);
    total->color = color.times(share);
    total->background = Color(0);
    total->alpha = alpha.times(share);
    region.storeFragments(x, y, pixel);
    region.resetFragments();
}

/// Traces one path, jittered within the pixel. False if its colour or alpha is NaN or infinite, so
/// that it is to be dropped.
bool TileWorker::renderSample(RenderContext& c, int x, int y, u32 seed, u32 sample) {
    const Random2 place = random2(seed, sample, RandomUse::Pixel);
    if (recorder)
        recorder->beginSample();
    startPath(c, renderer, thread, seed, sample);
    setup.makeRay(static_cast<double>(x) + static_cast<double>(place.x),
                  static_cast<double>(y) + static_cast<double>(place.y), c);
    renderer.trace(c);
    const bool good = !thread.sampleDropped && isFinite(c.traceResult + c.traceAlpha);
    thread.sampleDropped = false;
    return good;
}

long long TileWorker::getDropped() const {
    return dropped + (recorder ? recorder->getDropped() : 0);
}

const SceneObject* TileWorker::getBadObject() const {
    return thread.badObject || !recorder ? thread.badObject : recorder->getBadObject();
}

}  // namespace Tarnkit
