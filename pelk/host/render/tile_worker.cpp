#include "pelk/host/render/tile_worker.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "pelk/host/render/sample_goal.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/trace/sampling.h"
#include "pelk/platform/memory_shortage.h"

namespace Tarnkit {

u32 pixelSeed(int x, int y, u32 noise) {
    const u32 seed = hash32(static_cast<u32>(x) + hash32(static_cast<u32>(y) + 0x51ed270bu));
    return noise == 0 ? seed : hash32(seed ^ noise);
}

namespace {

/// A sample takes a few microseconds, and in the worst scenes a thousand times as long.
constexpr u32 kSamplesBetweenTests = 16;

}  // namespace

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

TileWorker::TileWorker(RenderSetup& setup_, const PictureRect& largest, int threadIndex)
    : renderer(setup_.renderer), setup(setup_), thread(setup_.renderer, threadIndex) {
    region.setChannels(setup.channels.getList());
    // Memory for the largest tile is taken here, and the region keeps it for the smaller ones.
    region.setRect(largest.x0, largest.y0, largest.x1, largest.y1);
    region.beginRendering();
    if (setup.channels.hasMore()) {
        recorder.emplace(region);
        thread.recorder = &*recorder;
    }
}

long long TileWorker::sample(TileSums& sums, const SampleGoal& goal, const StopTest& stop) {
    long long taken = 0;
    FragmentReader fragments(sums);
    packed.clear();
    std::size_t index = 0;
    for (int y = sums.rect.y0; y < sums.rect.y1; ++y) {
        for (int x = sums.rect.x0; x < sums.rect.x1; ++x, ++index) {
            PixelSums& pixel = sums.pixels[index];
            const u32 before = pixel.tried;
            FragmentList list{&region};
            if (recorder)
                fragments.read(index, region, list);
            samplePixel(x, y, goal.at(x - sums.rect.x0, y - sums.rect.y0), pixel, list, stop);
            taken += pixel.tried - before;
            if (recorder)
                sums.fragmentBytes[index] = packFragments(list, region, packed);
            region.resetFragments();
        }
    }
    if (recorder)
        sums.fragments.swap(packed);
    return taken;
}

/// Adds samples to a pixel, in their order, until it has `goal` of them.
void TileWorker::samplePixel(int x, int y, u32 goal, PixelSums& sums, FragmentList& fragments,
                             const StopTest& stop) {
    // Due before the first sample, a context fresh from the pool has no thread to go back to yet.
    if (sums.tried >= goal || stop.isDue())
        return;
    const u32 seed = pixelSeed(x, y, setup.getNoiseSeed());
    if (recorder)
        recorder->beginPixel();
    else
        thread.plainFragment = static_cast<PKFragment*>(region.newFragment());
    RenderContext& c = *thread.takeContext();
    const long long thrownBefore = lost.thrown;
    do {
        for (const u32 end = std::min(goal, sums.tried + kSamplesBetweenTests); sums.tried < end;) {
            if (!renderSample(c, x, y, seed, sums.begin()))
                continue;
            sums.add(c.traceResult, c.traceAlpha);
            if (recorder)
                recorder->endSample(c, fragments);
        }
    } while (sums.tried < goal && !stop.isDue());
    c.releaseContext();
    if (lost.thrown != thrownBefore)
        thread.takeBackContexts();  // a plug-in of others may have lost some
}

void TileWorker::develop(const TileSums& sums, const PictureRect& shown) {
    const PictureRect target = intersection(sums.rect, shown);
    region.setRect(target.x0, target.y0, target.x1, target.y1);
    FragmentReader fragments(sums);
    std::size_t index = 0;
    for (int y = sums.rect.y0; y < sums.rect.y1; ++y) {
        for (int x = sums.rect.x0; x < sums.rect.x1; ++x, ++index) {
            FragmentList list{&region};
            list.getFragment(kTagTotal);
            if (recorder)
                fragments.read(index, region, list);
            if (target.contains(x, y))
                developPixel(x, y, sums.pixels[index], list);
            region.resetFragments();
        }
    }
}

/// `fragments`: an empty total, followed by those of the objects in the pixel.
void TileWorker::developPixel(int x, int y, const PixelSums& sums, FragmentList& fragments) {
    auto* const total = static_cast<PKFragment*>(fragments.head());
    const u32 samples = std::max(sums.kept, 1u);
    if (recorder) {
        for (Fragment* part = total->nextFragment; part; part = part->nextFragment)
            total->addFragment(part, Color(1), 0);
        fragments.multiplyAll(1.0f / static_cast<float>(samples));
    }
    const double share = 1.0 / samples;
    total->color = sums.color.times(share);
    total->background = Color(0);
    total->alpha = sums.alpha.times(share);
    region.storeFragments(x, y, fragments);
}

/// Traces one path. False if it is lost, which is noted.
bool TileWorker::renderSample(RenderContext& c, int x, int y, u32 seed, u32 sample) {
    try {
        if (traceSample(c, x, y, seed, sample))
            return true;
        ++lost.dropped;
    } catch (...) {
        if (platform::hadMemoryShortage())
            throw;  // the next sample would fail too
        // Whatever a plug-in throws at a hit, the others can go on: its fields of the context are
        // written anew for each path.
        thread.sampleDropped = false;
        ++lost.thrown;
        if (lost.thrownBy.empty())
            lost.thrownBy = failureText();
        thread.call = {};
    }
    return false;
}

/// The path is jittered within the pixel. False if its colour or alpha is NaN or infinite.
bool TileWorker::traceSample(RenderContext& c, int x, int y, u32 seed, u32 sample) {
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

LostSamples TileWorker::takeLost() {
    if (recorder) {
        lost.dropped += recorder->takeDropped();
        lost.badObject = recorder->getBadObject();
    }
    if (thread.badObject)
        lost.badObject = thread.badObject;
    return std::exchange(lost, {});
}

}  // namespace Tarnkit
