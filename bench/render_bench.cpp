// The renderer's speed on the Cornell box beside the bare path tracer's, in turn in one run.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bare_path_tracer.h"
#include "render/host_session.h"
#include "render/render_job.h"
#include "render/scene.h"
#include "render/scene_reader.h"

using namespace Tarnkit;

namespace {

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    const int size = 512, samples = argc > 2 ? std::atoi(argv[2]) : 16;

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
    const std::atomic<bool> stop{false};
    std::vector<double> ours, theirs, ratios;
    const double total = double(size) * size * samples / 1e6;
    for (int round = 0; round < rounds; ++round) {
        Picture picture;
        const RenderResult result = renderScene(*scene, options, nullptr, nullptr, stop, picture);
        if (!result.ok) {
            std::fprintf(stderr, "%s\n", result.error.c_str());
            return 1;
        }
        const bench::BareResult peer = bare.render(size, samples, static_cast<unsigned>(round));
        ours.push_back(total / result.seconds);
        theirs.push_back(total / peer.seconds);
        ratios.push_back(peer.seconds / result.seconds);
    }
    std::printf("renderer, Cornell box, 1 thread   %7.3f Msamples/s\n", median(ours));
    std::printf("bare path tracer                  %7.3f Msamples/s\n", median(theirs));
    std::printf("renderer's share of the limit     %7.1f %%   (at least 50 %%)\n",
                100.0 * median(ratios));
    return 0;
}
