// The renderer's speed on the Cornell box beside the bare path tracer's, in turn in one run.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bare_path_tracer.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/host/render/render_job.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_reader.h"
#include "pelk/platform/debug_stream.h"

using namespace Tarnkit;

namespace {

constexpr int kChannels = 12;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Of the rendering alone. Ends the program with a message if there is none.
double secondsFor(Scene& scene, const RenderOptions& options) {
    const std::atomic<bool> stop{false};
    Picture picture;
    const RenderResult result = renderScene(scene, options, nullptr, nullptr, stop, picture);
    if (!result.ok) {
        std::fprintf(stderr, "%s\n", result.error.c_str());
        std::exit(1);
    }
    return result.seconds;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    const int size = 512, samples = argc > 2 ? std::atoi(argv[2]) : 16;

    platform::setDebugSink([](const char*) {});  // threads come and go with each render
    HostSession session;
    session.loadModules(PELK_MODULE_DIR "/", nullptr);
    std::string error;
    const auto scene = readScene(session, PELK_SCENE_DIR "/cornell.json", {}, error);
    if (!scene) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    const bench::BarePathTracer bare;
    RenderOptions options;
    options.width = options.height = size;
    options.samples = samples;
    options.threads = 1;
    RenderOptions withChannels = options;
    for (int i = 0; i < kChannels; ++i)
        withChannels.channels.push_back(kChannelAliases[kFirstExtraChannel + i].name);
    std::vector<double> ours, theirs, ratios, shares;
    const double total = static_cast<double>(size) * size * samples / 1e6;
    for (int round = 0; round < rounds; ++round) {
        const double seconds = secondsFor(*scene, options);
        const bench::BareResult peer = bare.render(size, samples, static_cast<unsigned>(round));
        ours.push_back(total / seconds);
        theirs.push_back(total / peer.seconds);
        ratios.push_back(peer.seconds / seconds);
        shares.push_back(seconds / secondsFor(*scene, withChannels));
    }
    std::printf("renderer, Cornell box, 1 thread   %7.3f Msamples/s\n", median(ours));
    std::printf("bare path tracer                  %7.3f Msamples/s\n", median(theirs));
    std::printf("renderer's share of the limit     %7.1f %%   (at least 50 %%)\n",
                100.0 * median(ratios));
    std::printf("speed with %d channels more       %7.1f %%   (at least 85 %%)\n", kChannels,
                100.0 * median(shares));
    return 0;
}
