#include "pelk/host/render/picture_sampler.h"

#include <algorithm>
#include <chrono>

#include "pelk/host/scene/scene.h"
#include "pelk/platform/system_info.h"

namespace Tarnkit {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

PictureSampler::PictureSampler(RenderSetup& setup_, const RenderOptions& options_,
                               const PictureRect& shown_, bool inPasses_, Picture& picture_)
    : setup(setup_),
      options(options_),
      shown(shown_),
      inPasses(inPasses_),
      picture(picture_),
      grid(shown, options.tileSize),
      queue(grid.size()) {
    if (inPasses)
        store = std::make_unique<SumStore>(grid, setup.channels.hasMore());
}

void PictureSampler::run(const WorkerGroup& group, RenderProgress* progress, RenderResult& result) {
    const Clock::time_point start = Clock::now();
    if (options.seconds > 0.0)
        deadline = start + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double>(options.seconds));
    const long long total = shown.numPixels() * options.samples;
    const auto tell = [&] {
        result.samples = samplesDone;
        result.seconds = secondsSince(start);
        if (progress)
            progress->update(result.samples, total, result.seconds);
    };
    WorkerGroup reporting = group;
    reporting.report = tell;
    runWorkers(reporting, [&](Worker& thread) { sampleTiles(group, thread, result); });
    if (tilesDone < grid.size())
        result.end = group.stop ? RenderEnd::Stopped : RenderEnd::OutOfTime;
    if (store)
        shownRange = store->getRange();
    else if (tilesDone < grid.size())
        shownRange.least = 0;
    result.samplesOfPixels = shownRange;
    if (inPasses && shownRange.least > 0)
        developTiles(group);
    tell();
}

/// What one thread does: it takes tiles until there are no more.
void PictureSampler::sampleTiles(const WorkerGroup& group, Worker& thread, RenderResult& result) {
    TileWorker worker(setup, grid.largest(), thread.getThreadIndex());
    const StopTest stop(group.stop, thread, deadline);
    TileSums sums;
    for (int tile; !stop.isDue() && (tile = queue.take()) >= 0;) {
        if (store)
            store->load(tile, sums);
        else
            sums = TileSums(grid.at(tile), worker.needsFragments());
        sampleTile(worker, sums, stop);
        if (store)
            store->commit(tile, sums);
        if (nextGoal(sums).samples > 0) {
            queue.putBack(tile);
            continue;
        }
        ++tilesDone;
        if (!inPasses)
            show(worker, sums);
    }
    const std::lock_guard lock(mutex);
    result.droppedSamples += worker.getDropped();
    if (worker.getBadObject())
        result.droppedBy =
            instanceName(static_cast<Plugin*>(worker.getBadObject()->material->getPlugin()));
}

/// One pass over a tile, or all that it needs.
void PictureSampler::sampleTile(TileWorker& worker, TileSums& sums, const StopTest& stop) {
    do {
        const SampleGoal goal = nextGoal(sums);
        samplesDone += worker.sample(sums, goal, stop);
    } while (!inPasses && !stop.isDue() && nextGoal(sums).samples > 0);
}

/// What the pixels of a tile get in its next pass; 0 samples if they have all.
SampleGoal PictureSampler::nextGoal(const TileSums& sums) const {
    const u32 all = static_cast<u32>(options.samples);
    const u32 least = sums.getRange().least;
    if (least >= all)
        return {};
    return {inPasses ? std::min(passEnd(least), all) : all};
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

bool passesFitIntoMemory(const PictureRect& area, const RenderChannels& channels, MessageLog* log) {
    constexpr std::uint64_t kFragmentsOfPixel = 2;
    std::uint64_t perPixel = sizeof(PixelSums);
    if (channels.hasMore()) {
        int slots = 0;
        for (RenderChannel* channel : channels.getList())
            slots += channel->getFlags() & kChannelNoFragmentData
                         ? 0
                         : channelTypeSize(channel->getType());
        perPixel += sizeof(u32) + kFragmentsOfPixel * packedFragmentSize(slots);
    }
    const std::uint64_t needed = static_cast<std::uint64_t>(area.numPixels()) * perPixel;
    platform::MemoryStatus memory;
    // A quarter is left for what else happens on the machine.
    if (!platform::memoryStatus(memory) || needed <= memory.freePhysical / 4 * 3)
        return true;
    if (log)
        log->info("Tile by tile: passes over the picture would need %llu MB, and %llu MB are free",
                  static_cast<unsigned long long>(needed >> 20),
                  static_cast<unsigned long long>(memory.freePhysical >> 20));
    return false;
}

}  // namespace Tarnkit
