#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>

#include "pelk/host/render/render_job.h"
#include "pelk/host/render/render_setup.h"
#include "pelk/host/render/sample_goal.h"
#include "pelk/host/render/sum_store.h"
#include "pelk/host/render/tile_queue.h"
#include "pelk/host/render/tile_worker.h"

namespace Tarnkit {

/// Takes the samples of one render on the threads of a group, and makes a picture of them: in
/// passes over the whole picture, between which the sums of all pixels are kept, or tile by tile.
/// Both give the same bits. Made and used by the thread that renders a scene.
class PictureSampler {
public:
    /// All must outlive this. `shown`: the pixels that the picture, which has its channels, is to
    /// get.
    PictureSampler(RenderSetup& setup, const RenderOptions& options, const PictureRect& shown,
                   bool inPasses, Picture& picture);

    /// Takes over what the checkpoint of an earlier run has, if there is one to go on with. Comes
    /// before `run`. False if that can't be done; the result says why.
    bool resume(MessageLog* log, RenderResult& result);

    /// Renders until all samples are there or the end comes early, and fills in what became of it.
    /// Throws what threads throw.
    void run(const WorkerGroup& group, RenderProgress* progress, RenderResult& result);

    /// Makes a picture of the samples that there are and hands it to RenderOptions::rescue, while
    /// `run` is under way on another thread and never ends, as one of its threads was stopped.
    /// Keeps the checkpoint too. `soFar`: the result of `run`.
    void saveWhatIsWhole(RenderResult soFar);

private:
    void developStore();
    void sampleTiles(const WorkerGroup& group, Worker& thread);
    void sampleTile(TileWorker& worker, TileSums& sums, const StopTest& stop);
    void finishTile(TileWorker& worker, const TileSums& sums);
    void noteDropped(TileWorker& worker);
    void tell(RenderProgress* progress, RenderResult& result);
    void keepCheckpoint(MessageLog* log, RenderResult& result);
    void keepAfterFailure(MessageLog* log, RenderResult& result);
    void tryInterim(MessageLog* log, const RenderResult& soFar);
    void showInterim(RenderResult soFar);
    void markTilesInWork();
    void noteWork(int tile, bool begins);
    void developTiles(const WorkerGroup& group);
    void show(TileWorker& worker, const TileSums& sums);

    RenderSetup& setup;
    const RenderOptions& options;
    const PictureRect shown;
    const SamplePlan plan;
    Picture& picture;
    const TileGrid grid;
    std::unique_ptr<SumStore> store;  // null if no sums are kept
    TileQueue queue;

    using Clock = std::chrono::steady_clock;
    Clock::time_point start, lastCheckpoint, lastInterim;
    StopTest::Deadline deadline;
    long long samplesBefore = 0;  // of earlier runs
    double secondsBefore = 0.0;
    // Samples taken, and those that blocks didn't need, by all threads.
    std::atomic<long long> samplesDone{0}, samplesSpared{0};
    std::atomic<int> tilesDone{0};
    std::mutex saving;  // of picture, checkpoint and their times, while threads run
    std::mutex mutex;   // of what follows, while threads run
    SampleRange shownRange;
    std::set<int> tilesInWork;
    long long dropped = 0;
    std::string droppedBy;
    long long thrown = 0;
    std::string thrownBy;
};

/// The pixels that must be sampled to render others until their noise is small: whole blocks.
PictureRect wholeBlocks(const PictureRect& area, int width, int height);

/// Whether the sums of all pixels fit into what the machine has free, with room for the rest. What
/// they need is estimated: `channels` asks for fragments, of which a pixel has two in the mean.
bool passesFitIntoMemory(const PictureRect& area, const RenderChannels& channels, MessageLog* log);

}  // namespace Tarnkit
