#include "pelk/host/render/render_job.h"

#include <algorithm>
#include <chrono>
#include <mutex>

#include "pelk/base/thrown_text.h"
#include "pelk/host/render/render_setup.h"
#include "pelk/host/render/render_workers.h"
#include "pelk/host/render/tile_worker.h"
#include "pelk/host/scene/scene.h"

namespace Tarnkit {

namespace {

/// Hands the tiles of a rectangle to the threads, row by row from the upper left. One atomic
/// counter balances the load: a thread with a cheap tile is back for the next one sooner.
class TileQueue {
public:
    TileQueue(const PictureRect& area_, int tileSize_)
        : area(area_),
          tileSize(tileSize_),
          columns(tilesIn(area.x1 - area.x0)),
          count(columns * tilesIn(area.y1 - area.y0)) {}

    /// A rectangle that any tile fits into; those at the right and lower edge may be smaller.
    PictureRect largest() const {
        return {0, 0, std::min(tileSize, area.x1 - area.x0), std::min(tileSize, area.y1 - area.y0)};
    }

    /// The next tile; false if there is none.
    bool next(PictureRect& tile) {
        const int index = taken.fetch_add(1, std::memory_order_relaxed);
        if (index >= count)
            return false;
        tile.x0 = area.x0 + index % columns * tileSize;
        tile.y0 = area.y0 + index / columns * tileSize;
        tile.x1 = std::min(tile.x0 + tileSize, area.x1);
        tile.y1 = std::min(tile.y0 + tileSize, area.y1);
        return true;
    }

private:
    int tilesIn(int pixels) const { return (pixels + tileSize - 1) / tileSize; }

    const PictureRect area;
    const int tileSize;
    const int columns, count;
    std::atomic<int> taken{0};
};

/// Renders a rectangle on the threads of a group, and fills in how far that came: `samples`,
/// `seconds`, `stopped`, and what was dropped.
void renderTiles(RenderSetup& setup, const RenderOptions& options, const PictureRect& area,
                 WorkerGroup group, RenderProgress* progress, Picture& picture,
                 RenderResult& result) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const auto total =
        static_cast<long long>(area.x1 - area.x0) * (area.y1 - area.y0) * options.samples;
    const auto tell = [&](long long samples) {
        result.samples = samples;
        result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        if (progress)
            progress->update(samples, total, result.seconds);
    };
    // Threads count pixels, as samples can be more than an int holds.
    group.report = [&](int pixels) { tell(static_cast<long long>(pixels) * options.samples); };
    TileQueue queue(area, options.tileSize);
    std::mutex mutex;
    int pixelsDone = 0;
    runWorkers(group, [&](Worker& thread) {
        TileWorker worker(setup, options.samples, queue.largest(), thread.getThreadIndex());
        for (PictureRect tile; !thread.mustStop() && queue.next(tile);) {
            worker.render(tile);
            picture.copyTile(worker.getRegion());
            thread.count((tile.x1 - tile.x0) * (tile.y1 - tile.y0));
        }
        const std::lock_guard lock(mutex);
        pixelsDone += thread.getCounted();
        result.droppedSamples += worker.getDropped();
        if (worker.getBadObject())
            result.droppedBy =
                instanceName(static_cast<Plugin*>(worker.getBadObject()->material->getPlugin()));
    });
    tell(static_cast<long long>(pixelsDone) * options.samples);
    result.stopped = result.samples < total;
}

}  // namespace

RenderResult renderScene(Scene& scene, const RenderOptions& options, MessageLog* log,
                         RenderProgress* progress, const std::atomic<bool>& stop,
                         Picture& picture) {
    RenderResult result;
    if (options.threads <= 0 && getNumThreads() > kMaxThreads && log)
        log->warning("PELK_NUM_THREADS: at most %d threads render", kMaxThreads);
    const int threads =
        std::min(options.threads > 0 ? options.threads : getNumThreads(), kMaxThreads);
    const PictureRect whole{0, 0, options.width, options.height};
    const PictureRect area = options.region.isEmpty() ? whole : options.region;
    try {
        RenderSetup setup(scene, options, threads, log);
        if (!setup.prepare(result.error))
            return result;
        picture.begin(options.width, options.height, setup.channels.getList());
        const OwnedThreadManager own(options.manager ? nullptr : newThreadManager());
        ThreadManager& manager = options.manager ? *options.manager : *own;
        renderTiles(setup, options, area,
                    {.manager = manager, .threads = threads, .stop = stop, .log = log}, progress,
                    picture, result);
        result.ok = true;
    } catch (...) {
        result.error = thrownText();
    }
    return result;
}

}  // namespace Tarnkit
