#include "render/render_job.h"

#include <algorithm>
#include <chrono>
#include <mutex>

#include "frame/exception_msg.h"
#include "render/host_renderer.h"
#include "render/plugin_life_cycle.h"
#include "render/render_workers.h"
#include "render/sampling.h"
#include "render/scene.h"
#include "render/scene_json.h"

namespace Tarnkit {

namespace {

constexpr int kTileSize = 32;

/// The scene's camera as materials ask it.
class MaterialCamera final : public PelkCamera {
public:
    explicit MaterialCamera(const CameraInterface& camera_) : camera(camera_) {}

    int mapToScreen(PelkContext& context, ScreenPoint& point, float* distance) override {
        return camera.project(context.hitPoint, point, distance);
    }

private:
    const CameraInterface& camera;
};

/// Counts what has been rendered, and hands the tiles of a rectangle to the threads.
class TileQueue {
public:
    TileQueue(const PixelRect& area_, const std::atomic<bool>& stop_)
        : area(area_),
          stop(stop_),
          columns(tilesIn(area.x1 - area.x0)),
          count(columns * tilesIn(area.y1 - area.y0)) {}

    /// The next tile; false if there is none or the render is to stop.
    bool next(PixelRect& tile) {
        if (stop.load(std::memory_order_relaxed) || failed.load(std::memory_order_relaxed))
            return false;
        const int index = taken.fetch_add(1, std::memory_order_relaxed);
        if (index >= count)
            return false;
        tile.x0 = area.x0 + index % columns * kTileSize;
        tile.y0 = area.y0 + index / columns * kTileSize;
        tile.x1 = std::min(tile.x0 + kTileSize, area.x1);
        tile.y1 = std::min(tile.y0 + kTileSize, area.y1);
        return true;
    }

    /// Lets the other threads end too.
    void fail() { failed.store(true, std::memory_order_relaxed); }

private:
    static int tilesIn(int pixels) { return (pixels + kTileSize - 1) / kTileSize; }

    const PixelRect area;
    const std::atomic<bool>& stop;
    const int columns, count;
    std::atomic<int> taken{0};
    std::atomic<bool> failed{false};
};

std::string nameOf(PluginInterface* face) {
    auto* plugin = static_cast<Plugin*>(face->getPlugin());
    return plugin->getPluginName() ? plugin->getPluginName() : "";
}

std::vector<Vector> faceNormalsOf(const Mesh& mesh) {
    std::vector<Vector> normals;
    normals.reserve(mesh.triangles.size());
    for (const auto& t : mesh.triangles) {
        const Vector &a = mesh.positions[t[0]], &b = mesh.positions[t[1]],
                     &c = mesh.positions[t[2]];
        normals.push_back(normalizeGuarded(cross(b - a, c - a)));
    }
    return normals;
}

bool buildObjects(Scene& scene, HostRenderer& renderer, std::string& error) {
    for (GeometryInterface* geometry : scene.collect<GeometryInterface>(EXT_GEOMETRY)) {
        auto object = std::make_unique<SceneObject>();
        if (!geometry->buildMesh(object->mesh, error)) {
            error = pointerTo("/plugins", nameOf(geometry)) + ": " + error;
            return false;
        }
        object->faceNormals = faceNormalsOf(object->mesh);
        object->plugin = geometry->getPlugin();
        object->material = findInterface<MaterialInterface>(geometry->getMaterial(), EXT_MATERIAL);
        object->index = static_cast<u32>(renderer.objects.size());
        renderer.objects.push_back(std::move(object));
    }
    return renderer.intersector.build(renderer.objects, error);
}

bool prepareLights(Scene& scene, HostRenderer& renderer, std::string& error) {
    std::vector<LightInterface*> lights = scene.collect<LightInterface>(EXT_LIGHT);
    const SceneBounds bounds = renderer.intersector.bounds();
    for (LightInterface* light : lights) {
        if (!light->prepare(bounds, error)) {
            error = pointerTo("/plugins", nameOf(light)) + ": " + error;
            return false;
        }
    }
    renderer.lightLoop.setLights(std::move(lights));
    return true;
}

void applySettings(const SceneSettings& settings, const RenderOptions& options, int threads,
                   MessageLog* log, HostRenderer& renderer) {
    SequenceData& sequence = renderer.sequenceData;
    sequence.log = log;
    sequence.numThreads = threads;
    sequence.maxRayDepth = settings.max_depth;
    sequence.reflectiveGi = settings.reflective_gi;
    renderer.gi.enabled = settings.gi;
    renderer.background = settings.background;
    renderer.frameData.frameTime = settings.time;
    renderer.frameData.imageWidth = options.width;
    renderer.frameData.imageHeight = options.height;
}

/// Writes all ray fields of a camera context that the camera leaves alone.
void startPath(RenderContext& c, HostRenderer& renderer, RenderThread& thread, u32 pixelSeed,
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
    c.rayClipDistance = 1e18f;
    c.rayContribution = 1.0f;
    c.rayWeight = c.rayWeight2 = c.spawnWeight = Color(1);
    c.environment = nullptr;
    c.environmentPriority = std::numeric_limits<int>::min();
    c.skipObject = c.skipTriangle = RenderContext::kNone;
    c.bsdfDensity = -1.0f;
    c.pathSeed = pixelSeed;
    c.sampleIndex = sample;
    c.numVolumes = 0;
    c.resultFragment = nullptr;
}

/// Renders the tiles that one thread gets.
class TileWorker {
public:
    TileWorker(HostRenderer& renderer_, const CameraInterface& camera_,
               const RenderOptions& options_, RenderThread& thread_)
        : renderer(renderer_), camera(camera_), options(options_), thread(thread_) {}

    void render(const PixelRect& tile, Picture& picture) {
        for (int y = tile.y0; y < tile.y1; ++y) {
            for (int x = tile.x0; x < tile.x1; ++x)
                picture.setPixel(x, y, renderPixel(x, y));
        }
    }

    long long getDropped() const { return dropped; }

private:
    AColor renderPixel(int x, int y) {
        const u32 seed = hash32(static_cast<u32>(x) + hash32(static_cast<u32>(y) + 0x51ed270bu));
        double r = 0, g = 0, b = 0, a = 0;
        RenderContext& c = *thread.takeContext();
        for (int sample = 0; sample < options.samples; ++sample) {
            const Random2 place = random2(seed, static_cast<u32>(sample), RandomUse::Pixel);
            startPath(c, renderer, thread, seed, static_cast<u32>(sample));
            camera.makeRay(double(x) + double(place.x), double(y) + double(place.y), c);
            renderer.trace(c);
            if (thread.sampleIsBad || !isFinite(c.traceResult + c.traceAlpha)) {
                thread.sampleIsBad = false;
                ++dropped;
                continue;
            }
            r += c.traceResult.r;
            g += c.traceResult.g;
            b += c.traceResult.b;
            a += mean(c.traceAlpha);
        }
        c.releaseContext();
        const double scale = 1.0 / options.samples;
        return {Color(static_cast<float>(r * scale), static_cast<float>(g * scale),
                      static_cast<float>(b * scale)),
                static_cast<float>(a * scale)};
    }

    HostRenderer& renderer;
    const CameraInterface& camera;
    const RenderOptions& options;
    RenderThread& thread;
    long long dropped = 0;
};

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

void renderTiles(HostRenderer& renderer, const CameraInterface& camera,
                 const RenderOptions& options, const PixelRect& area, int threads,
                 RenderProgress* progress, const std::atomic<bool>& stop, Picture& picture,
                 RenderResult& result) {
    TileQueue queue(area, stop);
    ProgressMeter meter(progress,
                        (long long)(area.x1 - area.x0) * (area.y1 - area.y0) * options.samples);
    std::mutex mutex;
    runWorkers(threads, [&](int index) {
        RenderThread thread(renderer, index);
        TileWorker worker(renderer, camera, options, thread);
        try {
            for (PixelRect tile; queue.next(tile);) {
                worker.render(tile, picture);
                meter.add((long long)(tile.x1 - tile.x0) * (tile.y1 - tile.y0) * options.samples);
            }
        } catch (...) {
            queue.fail();
            throw;
        }
        const std::lock_guard lock(mutex);
        result.droppedSamples += worker.getDropped();
        if (thread.badObject)
            result.droppedBy = nameOf(thread.badObject->material);
    });
    result.samples = meter.getDone();
    result.seconds = meter.seconds();
}

}  // namespace

RenderResult renderScene(Scene& scene, const RenderOptions& options, MessageLog* log,
                         RenderProgress* progress, const std::atomic<bool>& stop,
                         Picture& picture) {
    RenderResult result;
    if (!scene.camera) {
        result.error = "the scene has no camera";
        return result;
    }
    const int threads = options.threads > 0 ? options.threads : defaultWorkerCount();
    const PixelRect whole{0, 0, options.width, options.height};
    const PixelRect area = options.region.isEmpty() ? whole : options.region;
    try {
        HostRenderer renderer;
        applySettings(scene.settings, options, threads, log, renderer);
        PluginLifeCycle plugins(scene, renderer);
        MaterialCamera materialCamera(*scene.camera);
        renderer.sequenceData.camera = &materialCamera;
        plugins.begin();
        if (!buildObjects(scene, renderer, result.error) ||
            !prepareLights(scene, renderer, result.error))
            return result;
        if (!scene.camera->prepare(options.width, options.height, result.error))
            return result;
        renderer.frameData.cameraPosition = scene.camera->getPosition();
        scene.camera->getAxes(renderer.frameData.cameraMatrix);
        picture.resize(options.width, options.height);
        renderTiles(renderer, *scene.camera, options, area, threads, progress, stop, picture,
                    result);
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
