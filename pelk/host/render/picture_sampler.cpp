#include "pelk/host/render/picture_sampler.h"

#include <algorithm>

#include "pelk/base/thrown_text.h"
#include "pelk/host/render/checkpoint.h"
#include "pelk/host/render/plugin_faults.h"
#include "pelk/host/scene/scene.h"
#include "pelk/platform/memory_shortage.h"
#include "pelk/platform/system_info.h"

namespace Tarnkit {

namespace {

/// Bytes of a packed fragment in regions of these channels; 0 if no fragments are needed.
std::size_t fragmentSizeFor(const RenderChannels& channels) {
    if (!channels.hasMore())
        return 0;
    int slots = 0;
    for (RenderChannel* channel : channels.getList()) {
        if (!(channel->getFlags() & kChannelNoFragmentData))
            slots += channelTypeSize(channel->getType());
    }
    return packedFragmentSize(slots);
}

/// Whether so many seconds have gone by since something was done; never with 0 seconds.
bool isDue(std::chrono::steady_clock::time_point last, double seconds) {
    const auto now = std::chrono::steady_clock::now();
    return seconds > 0.0 && now - last > std::chrono::duration<double>(seconds);
}

/// Where noise decides, tiles are of whole blocks.
TileGrid gridFor(const RenderOptions& options, const PictureRect& shown) {
    if (options.noise <= 0.0)
        return {shown, options.tileSize};
    const int blocks = (options.tileSize + kNoiseBlock - 1) / kNoiseBlock;
    return {wholeBlocks(shown, options.width, options.height), blocks * kNoiseBlock};
}

}  // namespace

PictureSampler::PictureSampler(RenderSetup& setup_, const RenderOptions& options_,
                               const PictureRect& shown_, bool inPasses, Picture& picture_)
    : setup(setup_),
      options(options_),
      shown(shown_),
      plan{static_cast<u32>(options.samples), options.noise, inPasses},
      picture(picture_),
      grid(gridFor(options, shown)),
      queue(grid.size()) {
    if (inPasses || options.checkpoint)
        store = std::make_unique<SumStore>(grid, fragmentSizeFor(setup.channels));
}

bool PictureSampler::resume(MessageLog* log, RenderResult& result) {
    const CheckpointOptions* const checkpoint = options.checkpoint;
    if (!checkpoint || !checkpoint->resume)
        return true;
    if (!hasCheckpoint(*checkpoint)) {
        if (log)
            log->info("There is no \"%s\" to go on with", checkpoint->file.c_str());
        return true;
    }
    SamplingTotals totals;
    if (!readCheckpoint(*checkpoint, plan.samples, *store, totals, result.error,
                        result.systemFailed))
        return false;
    samplesDone = samplesBefore = store->numSamples();
    secondsBefore = totals.seconds;
    dropped = totals.dropped;
    droppedBy = totals.droppedBy;
    return true;
}

void PictureSampler::run(const WorkerGroup& group, RenderProgress* progress, RenderResult& result) {
    start = lastCheckpoint = lastInterim = Clock::now();
    if (options.seconds > 0.0)
        deadline = start + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double>(options.seconds));
    WorkerGroup reporting = group;
    reporting.report = [&] {
        const std::lock_guard lock(saving);  // of which the rescue of a fault never lets go
        tell(progress, result);
        if (options.checkpoint && isDue(lastCheckpoint, options.checkpoint->seconds))
            keepCheckpoint(group.log, result);
        if (plan.inPasses && options.interim && isDue(lastInterim, options.interimSeconds))
            tryInterim(group.log, result);
    };
    try {
        runWorkers(reporting, [&](Worker& thread) { sampleTiles(group, thread); });
    } catch (...) {
        const std::lock_guard lock(saving);
        keepAfterFailure(group.log, result);
        throw;
    }
    const std::lock_guard lock(saving);
    const bool isWhole = tilesDone == grid.size();
    if (!isWhole)
        result.end = group.stop ? RenderEnd::Stopped : RenderEnd::OutOfTime;
    tell(progress, result);
    if (options.checkpoint && samplesDone > samplesBefore)
        keepCheckpoint(group.log, result);
    if (store && (plan.inPasses || !isWhole)) {
        shownRange = store->getRange();
        if (shownRange.least > 0)
            developTiles(group);
    } else if (!isWhole) {
        shownRange.least = 0;
    }
    result.samplesOfPixels = shownRange;
}

/// A render that fails, mostly for lack of memory, need not lose what it has: the tiles of the
/// store are whole.
void PictureSampler::keepAfterFailure(MessageLog* log, RenderResult& result) {
    if (!options.checkpoint || samplesDone == samplesBefore)
        return;
    tell(nullptr, result);
    keepCheckpoint(log, result);
    if (result.checkpointError.empty() && log)
        log->warning("\"%s\" has what was rendered until then", options.checkpoint->file.c_str());
}

/// A picture that can't be shown for lack of memory is no reason to end the render.
void PictureSampler::tryInterim(MessageLog* log, const RenderResult& soFar) {
    try {
        showInterim(soFar);
    } catch (...) {
        if (log)
            log->warning("No picture is shown meanwhile: %s", thrownText().c_str());
        lastInterim = Clock::now();
    }
}

/// Makes the picture of what there is. The threads don't touch it in passes, and the end makes it
/// anew.
void PictureSampler::showInterim(RenderResult soFar) {
    soFar.samplesOfPixels = store->getRange();
    if (soFar.samplesOfPixels.least > 0) {
        developStore();
        markTilesInWork();
        soFar.end = RenderEnd::InWork;
        options.interim(picture, soFar);
    }
    lastInterim = Clock::now();
}

void PictureSampler::developStore() {
    TileWorker worker(setup, grid.largest(), 0);
    TileSums sums;
    for (int tile = 0; tile < grid.size(); ++tile) {
        store->load(tile, sums);
        show(worker, sums);
    }
}

void PictureSampler::saveWhatIsWhole(RenderResult soFar) {
    saving.lock();
    tell(nullptr, soFar);
    soFar.end = RenderEnd::Faulted;
    soFar.samplesOfPixels = store ? store->getRange() : SampleRange{};
    if (soFar.samplesOfPixels.least > 0)
        developStore();
    options.rescue(picture, soFar);
    // Behind the picture, which is worth more: the limit of time may come first.
    if (options.checkpoint && samplesDone > samplesBefore)
        keepCheckpoint(nullptr, soFar);
}

void PictureSampler::markTilesInWork() {
    std::set<int> tiles;
    {
        const std::lock_guard lock(mutex);
        tiles = tilesInWork;
    }
    for (const int tile : tiles) {
        const PictureRect rect = intersection(grid.at(tile), shown);
        picture.getRegion().shadeRegion(rect.x0, rect.y0, rect.x1, rect.y1, kShadeBlue);
    }
}

/// How far the render has come.
void PictureSampler::tell(RenderProgress* progress, RenderResult& result) {
    {
        const std::lock_guard lock(mutex);
        result.droppedSamples = dropped;
        result.droppedBy = droppedBy;
        result.thrownSamples = thrown;
        result.thrownBy = thrownBy;
    }
    result.samples = samplesDone;
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    result.seconds = secondsBefore + seconds;
    const long long total = grid.getArea().numPixels() * options.samples - samplesSpared;
    if (progress)
        progress->update(result.samples, total, result.seconds);
}

void PictureSampler::keepCheckpoint(MessageLog* log, RenderResult& result) {
    result.checkpointError.clear();
    const SamplingTotals totals{result.seconds, result.droppedSamples, result.droppedBy};
    try {
        writeCheckpoint(*options.checkpoint, *store, totals, result.checkpointError);
    } catch (...) {
        result.checkpointError = "checkpoint \"" + options.checkpoint->file + "\": " + thrownText();
    }
    if (!result.checkpointError.empty() && log)
        log->warning("%s", result.checkpointError.c_str());
    lastCheckpoint = Clock::now();
}

/// What one thread does: it takes tiles until there are no more.
void PictureSampler::sampleTiles(const WorkerGroup& group, Worker& thread) {
    TileWorker worker(setup, grid.largest(), thread.getThreadIndex());
    const StopTest stop(group.stop, thread, deadline);
    TileSums sums;
    for (int tile; !stop.isDue() && !hadPluginFault() && (tile = queue.take()) >= 0;) {
        if (store)
            store->load(tile, sums);
        else
            sums = TileSums(grid.at(tile), worker.needsFragments());
        noteWork(tile, true);
        sampleTile(worker, sums, stop);
        noteDropped(worker);
        if (store)
            store->commit(tile, sums);
        noteWork(tile, false);
        if (plan.next(sums).samples > 0)
            queue.putBack(tile);
        else
            finishTile(worker, sums);
    }
}

/// One pass over a tile, or all that it needs.
void PictureSampler::sampleTile(TileWorker& worker, TileSums& sums, const StopTest& stop) {
    do {
        const SampleGoal goal = plan.next(sums);
        samplesDone += worker.sample(sums, goal, stop);
    } while (!plan.inPasses && !stop.isDue() && plan.next(sums).samples > 0);
}

void PictureSampler::finishTile(TileWorker& worker, const TileSums& sums) {
    samplesSpared += sums.rect.numPixels() * options.samples - sums.numSamples();
    if (!plan.inPasses)
        show(worker, sums);
    ++tilesDone;
}

void PictureSampler::noteWork(int tile, bool begins) {
    const std::lock_guard lock(mutex);
    if (begins)
        tilesInWork.insert(tile);
    else
        tilesInWork.erase(tile);
}

void PictureSampler::noteDropped(TileWorker& worker) {
    const LostSamples lost = worker.takeLost();
    if (lost.dropped == 0 && lost.thrown == 0)
        return;
    const std::lock_guard lock(mutex);
    dropped += lost.dropped;
    thrown += lost.thrown;
    if (lost.dropped > 0 && lost.badObject) {
        const SceneObject& object = *lost.badObject;
        PluginBase* const culprit = object.material ? object.material->getPlugin() : object.plugin;
        droppedBy = instanceName(static_cast<Plugin*>(culprit));
    }
    if (thrownBy.empty())
        thrownBy = lost.thrownBy;
}

/// Makes the picture of what the store holds. Nothing ends it early: it is what a render that was
/// stopped leaves behind.
void PictureSampler::developTiles(const WorkerGroup& group) {
    static const std::atomic<bool> never{false};
    std::atomic<int> next{0};
    runWorkers({.manager = group.manager, .threads = group.threads, .stop = never},
               [&](Worker& thread) {
                   TileWorker worker(setup, grid.largest(), thread.getThreadIndex());
                   TileSums sums;
                   for (int tile; !thread.mustStop() && (tile = next++) < grid.size();) {
                       store->load(tile, sums);
                       show(worker, sums);
                   }
               });
}

void PictureSampler::show(TileWorker& worker, const TileSums& sums) {
    worker.develop(sums, shown);
    picture.copyTile(worker.getRegion());
    const SampleRange range = sums.getRange();
    const std::lock_guard lock(mutex);
    shownRange.add(range);
}

PictureRect wholeBlocks(const PictureRect& area, int width, int height) {
    const auto down = [](int value) { return value / kNoiseBlock * kNoiseBlock; };
    const auto up = [&](int value) { return down(value + kNoiseBlock - 1); };
    return {down(area.x0), down(area.y0), std::min(up(area.x1), width),
            std::min(up(area.y1), height)};
}

bool passesFitIntoMemory(const PictureRect& area, const RenderChannels& channels, MessageLog* log) {
    constexpr std::uint64_t kFragmentsOfPixel = 2;
    std::uint64_t perPixel = sizeof(PixelSums);
    if (channels.hasMore())
        perPixel += sizeof(u32) + kFragmentsOfPixel * fragmentSizeFor(channels);
    const std::uint64_t needed = static_cast<std::uint64_t>(area.numPixels()) * perPixel;
    platform::MemoryStatus memory;
    // A quarter is left for what else happens on the machine.
    const bool isFree = !platform::memoryStatus(memory) || needed <= memory.freePhysical / 4 * 3;
    if (isFree && platform::canHaveMemory(static_cast<std::size_t>(needed), 0))
        return true;
    if (log && isFree)
        log->info(
            "Tile by tile: passes over the picture would need %llu MB, and the process may "
            "not have that",
            static_cast<unsigned long long>(needed >> 20));
    else if (log)
        log->info("Tile by tile: passes over the picture would need %llu MB, and %llu MB are free",
                  static_cast<unsigned long long>(needed >> 20),
                  static_cast<unsigned long long>(memory.freePhysical >> 20));
    return false;
}

}  // namespace Tarnkit
