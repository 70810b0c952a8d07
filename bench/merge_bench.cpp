// Merging of region files: its time grows as the pixels do, and not faster.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "comparison.h"
#include "pelk/host/picture/region_file.h"
#include "pelk/host/render/merge_job.h"
#include "pelk/support/regions/channel_kinds.h"
#include "temporary_directory.h"

using namespace Tarnkit;

namespace {

constexpr const char* kChannels[] = {"beauty", "alpha", "depth", "normals", "render_id", "diffuse"};

/// Region files of a picture without content, `bands` of equal height.
class Regions {
public:
    Regions(int side, int bands) {
        std::vector<std::unique_ptr<RenderChannel>> channels;
        std::vector<RenderChannel*> list;
        for (const char* name : kChannels) {
            channels.push_back(newChannel(findChannelAlias(name)->alias));
            list.push_back(channels.back().get());
        }
        Picture picture;
        picture.begin(side, side, list);
        FileHeader header;
        header.width = header.height = side;
        header.channels = fileChannelsOf(picture);
        std::string error;
        for (int i = 0; i < bands; ++i) {
            header.rect = {0, side * i / bands, side, side * (i + 1) / bands};
            options.files.push_back(directory.file(std::to_string(i) + ".pkr"));
            if (!writeRegionFile(options.files.back(), header, picture, error))
                std::fprintf(stderr, "%s\n", error.c_str());
        }
    }

    void merge() const {
        Picture picture;
        const MergeResult result = mergeRegions(options, false, picture);
        if (!result.ok)
            std::fprintf(stderr, "%s\n", result.error.c_str());
    }

private:
    TemporaryDirectory directory;
    MergeOptions options;
};

/// Merges a picture so many times.
template <int kSide, int kBands, int kTimes>
void merge(benchmark::State& state) {
    static const Regions regions(kSide, kBands);
    for (auto _ : state) {
        for (int i = 0; i < kTimes; ++i)
            regions.merge();
    }
}

void fourSmall(benchmark::State& state) {
    merge<1024, 4, 4>(state);
}
void oneLarge(benchmark::State& state) {
    merge<2048, 4, 1>(state);
}
void manyFiles(benchmark::State& state) {
    merge<2048, 128, 1>(state);
}
BENCHMARK(fourSmall);
BENCHMARK(oneLarge);
BENCHMARK(manyFiles);

}  // namespace

int main(int argc, char** argv) {
    Comparison table(argc, argv);
    table.row("merge, 2048 x 2048 of 4 files", "oneLarge", "fourSmall", "4 times 1024 x 1024",
              1.25);
    table.row("merge, 2048 x 2048 of 128 files", "manyFiles", "oneLarge", "of 4 files", 1.5);
    return 0;
}
