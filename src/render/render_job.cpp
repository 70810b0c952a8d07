#include "render/render_job.h"

#include <algorithm>
#include <chrono>
#include <mutex>

#include "frame/exception_msg.h"
#include "render/render_setup.h"
#include "render/render_workers.h"
#include "render/scene.h"
#include "render/tile_worker.h"

namespace Tarnkit {

namespace {

/// Counts what has been rendered, and hands the tiles of a rectangle to the threads.
class TileQueue {
public:
    TileQueue(const PictureRect& area_, int tileSize_, const std::atomic<bool>& stop_)
        : area(area_),
          tileSize(tileSize_),
          stop(stop_),
          columns(tilesIn(area.x1 - area.x0)),
          count(columns * tilesIn(area.y1 - area.y0)) {}

    /// As large as any tile.
    PictureRect largest() const {
        return {0, 0, std::min(tileSize, area.x1 - area.x0), std::min(tileSize, area.y1 - area.y0)};
    }

    /// The next tile; false if there is none or the render is to stop.
    bool next(PictureRect& tile) {
        if (stop.load(std::memory_order_relaxed) || failed.load(std::memory_order_relaxed))
            return false;
        const int index = taken.fetch_add(1, std::memory_order_relaxed);
        if (index >= count)
            return false;
        tile.x0 = area.x0 + index % columns * tileSize;
        tile.y0 = area.y0 + index / columns * tileSize;
        tile.x1 = std::min(tile.x0 + tileSize, area.x1);
        tile.y1 = std::min(tile.y0 + tileSize, area.y1);
        return true;
    }

    /// Lets the other threads end too.
    void fail() { failed.store(true, std::memory_order_relaxed); }

private:
    int tilesIn(int pixels) const { return (pixels + tileSize - 1) / tileSize; }

    const PictureRect area;
    const int tileSize;
    const std::atomic<bool>& stop;
    const int columns, count;
    std::atomic<int> taken{0};
    std::atomic<bool> failed{false};
};

std::string nameOf(PluginInterface* face) {
    auto* plugin = static_cast<Plugin*>(face->getPlugin());
    return plugin->getPluginName() ? plugin->getPluginName() : "";
}

/// Passes the progress of all threads on, one call at a time and not too often.
class ProgressMeter {
public:
    using Clock = std::chrono::steady_clock;

    ProgressMeter(RenderProgress* progress_, long long total_)
        : progress(progress_), total(total_) {}

    void add(long long samples) {
        const std::lock_guard lock(mutex);
        done += samples;
        const auto now = Clock::now();
        if (progress && (now >= nextCall || done == total)) {
            nextCall = now + std::chrono::milliseconds(200);
            progress->update(done, total, seconds());
        }
    }

    double seconds() const { return std::chrono::duration<double>(Clock::now() - start).count(); }
    long long getDone() const { return done; }

private:
    RenderProgress* progress;
    const long long total;
    const Clock::time_point start = Clock::now();
    std::mutex mutex;
    long long done = 0;
    Clock::time_point nextCall = start;
};

void renderTiles(RenderSetup& setup, const RenderOptions& options, const PictureRect& area,
                 int threads, RenderProgress* progress, const std::atomic<bool>& stop,
                 Picture& picture, RenderResult& result) {
    TileQueue queue(area, options.tileSize, stop);
    ProgressMeter meter(progress,
                        (long long)(area.x1 - area.x0) * (area.y1 - area.y0) * options.samples);
    std::mutex mutex;
    runWorkers(threads, [&](int index) {
        try {
            TileWorker worker(setup, options.samples, queue.largest(), index);
            for (PictureRect tile; queue.next(tile);) {
                worker.render(tile);
                picture.copyTile(worker.getRegion());
                meter.add((long long)(tile.x1 - tile.x0) * (tile.y1 - tile.y0) * options.samples);
            }
            const std::lock_guard lock(mutex);
            result.droppedSamples += worker.getDropped();
            if (worker.getBadObject())
                result.droppedBy = nameOf(worker.getBadObject()->material);
        } catch (...) {
            queue.fail();
            throw;
        }
    });
    result.samples = meter.getDone();
    result.seconds = meter.seconds();
}

}  // namespace

RenderResult renderScene(Scene& scene, const RenderOptions& options, MessageLog* log,
                         RenderProgress* progress, const std::atomic<bool>& stop,
                         Picture& picture) {
    RenderResult result;
    const int threads = options.threads > 0 ? options.threads : defaultWorkerCount();
    const PictureRect whole{0, 0, options.width, options.height};
    const PictureRect area = options.region.isEmpty() ? whole : options.region;
    try {
        RenderSetup setup(scene, options, threads, log);
        if (!setup.prepare(result.error))
            return result;
        picture.begin(options.width, options.height, setup.channels.getList());
        renderTiles(setup, options, area, threads, progress, stop, picture, result);
        result.stopped = stop.load();
        result.ok = true;
    } catch (const ExceptionMsg& failure) {
        result.error = failure.text;
    } catch (const std::exception& failure) {
        result.error = failure.what();
    }
    return result;
}

}  // namespace Tarnkit
