#include "pelk/host/render/render_job.h"

#include <algorithm>

#include "pelk/host/render/picture_sampler.h"
#include "pelk/host/render/plugin_faults.h"
#include "pelk/host/scene/failure_text.h"

namespace Tarnkit {

namespace {

bool usesPasses(const RenderOptions& options, const PictureRect& area,
                const RenderChannels& channels, MessageLog* log) {
    if (options.order == SampleOrder::Automatic)
        return passesFitIntoMemory(area, channels, log);
    return options.order == SampleOrder::Passes;
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
    FaultRescue rescue;  // to the end of the plug-ins' life cycle, in which one may fault too
    try {
        RenderSetup setup(scene, options, threads, log);
        if (!setup.prepare(result.error))
            return result;
        picture.begin(options.width, options.height, setup.channels.getList());
        const OwnedThreadManager own(options.manager ? nullptr : newThreadManager());
        ThreadManager& manager = options.manager ? *options.manager : *own;
        const bool inPasses = usesPasses(options, area, setup.channels, log);
        if (!inPasses && options.interimSeconds > 0.0 && log)
            log->warning("No picture is shown meanwhile: samples don't come in passes");
        PictureSampler sampler(setup, options, area, inPasses, picture);
        if (!sampler.resume(log, result))
            return result;
        if (options.rescue)
            rescue.set([&] { sampler.saveWhatIsWhole(result); });
        sampler.run({.manager = manager, .threads = threads, .stop = stop, .log = log}, progress,
                    result);
        result.ok = true;
        if (options.rescue)
            rescue.set([&] { options.rescue(picture, result); });
    } catch (...) {
        result.error = failureText();
        result.systemFailed = true;
    }
    return result;
}

}  // namespace Tarnkit
