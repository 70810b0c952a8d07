#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "pelk/host/picture/picture.h"
#include "pelk/host/picture/picture_rect.h"
#include "pelk/host/render/tile_sums.h"

namespace Tarnkit {

struct CheckpointOptions;
class MessageLog;
class Scene;
class ThreadManager;

/// In which order a picture gets its samples; the picture is the same.
enum class SampleOrder {
    Automatic,  ///< passes, if the sums of all pixels fit into memory
    Passes,     ///< a few for every pixel, then more: an early end leaves a whole picture
    Tiles,      ///< all of a tile at once: next to no memory beside the picture
};

/// How a render came to its end.
enum class RenderEnd {
    Finished,
    Stopped,    ///< by `stop`
    OutOfTime,  ///< RenderOptions::seconds were over
    Faulted,    ///< a plug-in did, and the process ends
    InWork,     ///< not yet: the picture is shown meanwhile
};

struct RenderResult;

/// What one render is to do. Sizes and counts are above 0, but where a comment gives 0 a meaning.
struct RenderOptions {
    int width = 0, height = 0;  ///< of the whole picture
    int samples = 16;           ///< per pixel
    int threads = 0;            ///< 0: as many as getNumThreads() says
    PictureRect region;         ///< what to render; empty stands for the whole picture
    int tileSize = 32;          ///< pixels on a side of a tile, which one thread renders
    SampleOrder order = SampleOrder::Automatic;
    /// Ends the render so many seconds after its first sample, with what there is; 0: no limit.
    double seconds = 0.0;
    /// Ends the samples of a block of pixels once its noise is below this, with `samples` as the
    /// most (see blockNoise); 0: all pixels get `samples`.
    double noise = 0.0;
    /// Where the render is kept to go on another time; the caller's. Null: nowhere.
    const CheckpointOptions* checkpoint = nullptr;
    /// Shows the picture so often while it is rendered in passes, from the first whole one on, with
    /// the tiles shaded that threads have at the moment, and what has come of the render so far; 0:
    /// not at all. Called on the thread of renderScene, while the others go on.
    double interimSeconds = 0.0;
    std::function<void(Picture&, const RenderResult&)> interim;
    /// Saves what there is when a plug-in faults: called at most once, as FaultRescue tells, with a
    /// picture in which each pixel has a sample, or with samplesOfPixels 0 and none. May be empty.
    std::function<void(Picture&, const RenderResult&)> rescue;
    std::vector<std::string> channels;  ///< names of render channels beside those of the scene
    u32 noiseSeed = 0;                  ///< each number has a pattern of noise of its own
    ThreadManager* manager = nullptr;   ///< whose threads render; null: threads of their own
};

/// The most threads that a render uses, however many are asked for: each has pools of its own.
inline constexpr int kMaxThreads = 1024;

/// The largest RenderOptions::tileSize.
inline constexpr int kMaxTileSize = 4096;

/// Follows how far a render has come. Called about every 200 ms and at the end, on the thread of
/// renderScene; what it throws ends the render as a failure.
class RenderProgress {
public:
    virtual ~RenderProgress() = default;
    /// `samplesDone` of `samplesTotal`, `seconds` since the first sample.
    virtual void update(long long samplesDone, long long samplesTotal, double seconds) = 0;
};

/// What became of a render.
struct RenderResult {
    bool ok = false;  ///< false: nothing was rendered, `error` says why
    /// With `ok` false: the system failed, mostly for lack of memory, or a plug-in, and not the
    /// scene; the same may succeed another time.
    bool systemFailed = false;
    std::string error;
    RenderEnd end = RenderEnd::Finished;
    /// Of the pixels that were to be rendered. If one of them has none, the picture is left without
    /// any: a part of it is no use in the place of an older one.
    SampleRange samplesOfPixels;
    std::string checkpointError;  ///< why there is no checkpoint of the end; empty if there is
    long long samples = 0;        ///< of all pixels together, those of earlier runs included
    double seconds = 0.0;         ///< of tracing rays, without reading and building the scene
    /// Left out since a colour or a ray of theirs was NaN or infinite, or a ray beyond 1e18.
    long long droppedSamples = 0;
    std::string droppedBy;        ///< name of an instance that made one of them; empty for a light
    long long thrownSamples = 0;  ///< left out since a plug-in threw
    std::string thrownBy;         ///< what one of them said, and who, as failureText tells it
};

/// Renders the scene into `picture`, which gets the size of the whole picture; pixels outside the
/// region hold what a miss gives. Each thread takes one tile after the other from a common queue
/// and gives it more samples, RenderOptions::order says how many at a time. The picture has the
/// same bits whatever the number of threads, the size of tiles and the order.
///
/// `stop` may be set from any thread or a signal handler, and ends the render behind the few
/// samples in work. `log` and `progress` may be null. Nothing is thrown: `error` of the result has
/// the words.
RenderResult renderScene(Scene& scene, const RenderOptions& options, MessageLog* log,
                         RenderProgress* progress, const std::atomic<bool>& stop, Picture& picture);

}  // namespace Tarnkit
