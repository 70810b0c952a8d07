// What passes over the whole picture cost beside all samples of a tile at once, and how little
// memory a large picture takes beside its pixels where it is rendered tile by tile.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "pelk/host/render/render_job.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_reader.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/system_info.h"

using namespace Tarnkit;

namespace {

/// Notes the most memory that the process has while it renders.
class PeakMemory final : public RenderProgress {
public:
    void update(long long, long long, double) override {
        peak = std::max(peak, platform::workingSet());
    }
    std::int64_t peak = 0;
};

/// Processor time of a render, in seconds. Ends the program with a message if there is none.
double costOf(Scene& scene, const RenderOptions& options, RenderProgress* progress = nullptr) {
    const std::atomic<bool> stop{false};
    Picture picture;
    const std::clock_t start = std::clock();
    const RenderResult result = renderScene(scene, options, nullptr, progress, stop, picture);
    if (!result.ok) {
        std::fprintf(stderr, "%s\n", result.error.c_str());
        std::exit(1);
    }
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

double costOfPasses(Scene& scene) {
    RenderOptions options;
    options.width = options.height = 192;
    options.samples = 64;
    options.threads = 1;
    std::vector<double> ratios;
    for (int round = 0; round < 5; ++round) {
        options.order = SampleOrder::Passes;
        const double passes = costOf(scene, options);
        options.order = SampleOrder::Tiles;
        ratios.push_back(passes / costOf(scene, options));
    }
    std::sort(ratios.begin(), ratios.end());
    return ratios[ratios.size() / 2];
}

/// The peak as a share of what the pixels of six channels need, without what the program and its
/// libraries have before.
double memoryOfTiles(Scene& scene) {
    RenderOptions options;
    options.width = options.height = 8192;
    options.samples = 1;
    options.order = SampleOrder::Tiles;
    options.channels = {"diffuse", "depth", "normals", "render_id"};
    constexpr double kBytesOfPixel = 12 + 12 + 12 + 4 + 12 + 4;
    PeakMemory memory;
    const std::int64_t before = platform::workingSet();
    costOf(scene, options, &memory);
    return static_cast<double>(memory.peak - before) / (kBytesOfPixel * 8192 * 8192);
}

}  // namespace

int main() {
    platform::setDebugSink([](const char*) {});  // threads come and go with each render
    HostSession session;
    session.loadModules(PELK_MODULE_DIR "/", nullptr);
    std::string error;
    const auto scene = readScene(session, PELK_SCENE_DIR "/cornell.json", {}, error);
    if (!scene) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    std::printf("passes beside tiles, 64 samples   %7.1f %%   (at most 103 %%)\n",
                100.0 * costOfPasses(*scene));
    std::printf("memory of 8192 x 8192, by tiles   %7.1f %%   (at most 105 %% of its pixels)\n",
                100.0 * memoryOfTiles(*scene));
    return 0;
}
