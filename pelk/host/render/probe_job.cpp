#include "pelk/host/render/probe_job.h"

#include <cstring>

#include "pelk/host/render/render_setup.h"
#include "pelk/host/render/sample_goal.h"
#include "pelk/host/render/tile_worker.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/trace/surface_uv.h"

namespace Tarnkit {

namespace {

ProbedHit describeHit(const RenderContext& c, float distance) {
    ProbedHit hit;
    hit.object = static_cast<Plugin*>(c.object->plugin);
    if (c.object->material)
        hit.material = static_cast<Plugin*>(c.object->material->getPlugin());
    hit.triangle = c.triangle;
    hit.distance = distance;
    hit.point = c.hitPoint;
    hit.normal = c.normal;
    hit.geomNormal = c.geomNormal;
    hit.backSide = c.backSide != 0;
    hit.uv = surfaceUV(c);
    return hit;
}

std::optional<ProbedHit> probeHit(RenderSetup& setup, int x, int y) {
    HostRenderer& renderer = setup.renderer;
    RenderThread thread(renderer, 0);
    RenderContext& c = *thread.takeContext();
    startPath(c, renderer, thread, pixelSeed(x, y, setup.getNoiseSeed()), 0);
    setup.makeRay(x + 0.5, y + 0.5, c);
    u32 object;
    const float distance = renderer.intersector.closest(c, object, c);
    if (distance < 0.0f)
        return {};
    renderer.fillHit(c, object, distance);
    ProbedHit hit = describeHit(c, distance);
    renderer.shadeHit(c);
    hit.color = c.resultColor;
    hit.transparency = c.resultTransparency;
    hit.alpha = c.resultAlpha;
    hit.alphaTransparency = c.resultAlphaTransparency;
    c.releaseContext();
    return hit;
}

std::vector<ProbedChannel> readChannels(PKRegionData& region) {
    std::vector<ProbedChannel> channels;
    for (const ChannelRecord& record : region.getChannels()) {
        ProbedChannel channel{record.name, record.type, {}, 0};
        void* const value =
            record.type == kChannelInt ? static_cast<void*>(&channel.id) : channel.values.data();
        std::memcpy(value, record.buffer->item(0),
                    static_cast<std::size_t>(channelTypeSize(record.type)));
        channels.push_back(channel);
    }
    return channels;
}

}  // namespace

ProbeResult probePixel(Scene& scene, const RenderOptions& options, int x, int y, MessageLog* log) {
    ProbeResult result;
    try {
        RenderSetup setup(scene, options, 1, log);
        if (!setup.prepare(result.error))
            return result;
        result.hit = probeHit(setup, x, y);
        const PictureRect pixel{x, y, x + 1, y + 1};
        TileWorker worker(setup, pixel, 0);
        TileSums sums(pixel, worker.needsFragments());
        worker.sample(sums, {static_cast<u32>(options.samples)}, StopTest());
        worker.develop(sums, pixel);
        result.channels = readChannels(worker.getRegion());
        result.ok = true;
    } catch (...) {
        result.error = failureText();
    }
    return result;
}

}  // namespace Tarnkit
