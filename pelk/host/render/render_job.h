#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "pelk/host/picture/picture.h"

namespace Tarnkit {

class MessageLog;
class Scene;
class ThreadManager;

/// A rectangle of pixels; x1 and y1 lie outside.
struct PictureRect {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    bool isEmpty() const { return x1 <= x0 || y1 <= y0; }
};

struct RenderOptions {
    int width = 0, height = 0;          ///< of the whole picture
    int samples = 16;                   ///< per pixel
    int threads = 0;                    ///< 0: as many as getNumThreads() says
    PictureRect region;                 ///< what to render; empty stands for the whole picture
    int tileSize = 32;                  ///< pixels on a side of what a thread renders at a time
    std::vector<std::string> channels;  ///< names beyond those that the scene asks for
    ThreadManager* manager = nullptr;   ///< whose threads render; null: threads of their own
};

/// The most threads that a render uses, however many are asked for.
inline constexpr int kMaxThreads = 1024;

/// The largest RenderOptions::tileSize.
inline constexpr int kMaxTileSize = 4096;

/// How far a render has come. Called now and then and at the end, on the thread of renderScene.
class RenderProgress {
public:
    virtual ~RenderProgress() = default;
    /// `samplesDone` of `samplesTotal`, `seconds` since the first sample.
    virtual void update(long long samplesDone, long long samplesTotal, double seconds) = 0;
};

/// What became of a render.
struct RenderResult {
    bool ok = false;       ///< false: nothing was rendered, `error` says why
    bool stopped = false;  ///< ended early by `stop`; what was finished stands in the picture
    std::string error;
    long long samples = 0;
    double seconds = 0.0;          ///< the rendering alone
    long long droppedSamples = 0;  ///< colours that weren't finite
    std::string droppedBy;         ///< name of an instance that made one of them
};

/// Renders the scene into `picture`, which gets the size of the whole picture. `stop` may be set
/// from any thread or a signal handler; `progress` may be null.
RenderResult renderScene(Scene& scene, const RenderOptions& options, MessageLog* log,
                         RenderProgress* progress, const std::atomic<bool>& stop, Picture& picture);

}  // namespace Tarnkit
