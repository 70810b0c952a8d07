// Fragments and the read-out of regions beside what does no more than move the same bytes.

#include <OpenImageIO/imageio.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "comparison.h"
#include "pelk/support/regions/channel_kinds.h"
#include "pelk/support/regions/region_data.h"

using namespace Tarnkit;

namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr const char* kChannels[] = {"beauty",  "alpha", "depth",      "normals",    "render_id",
                                     "diffuse", "uv",    "reflection", "refraction", "specular"};

/// A region with ten channels, as a render has them.
class Region : public PKRegionData {
public:
    Region(int regionWidth, int regionHeight) {
        for (const char* name : kChannels) {
            channels.push_back(newChannel(findChannelAlias(name)->alias));
            addChannel(channels.back().get());
        }
        setRect(0, 0, regionWidth, regionHeight);
        beginRendering();
    }

private:
    std::vector<std::unique_ptr<RenderChannel>> channels;
};

void fragmentRound(benchmark::State& state) {
    Region region(32, 32);
    Fragment* const sum = region.newFragment();
    for (auto _ : state) {
        Fragment* const fragment = region.newFragment();
        fragment->clear(0);
        sum->addFragment(fragment, Color(0.5f), 0);
        region.deleteFragment(fragment);
        benchmark::ClobberMemory();
    }
    region.resetFragments();
}
BENCHMARK(fragmentRound);

void structCopy(benchmark::State& state) {
    Region region(32, 32);
    const std::size_t size =
        sizeof(PKFragment) + static_cast<std::size_t>(region.getTemplateSize());
    std::vector<char> from(size, 1), to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(structCopy);

void readPixels(benchmark::State& state) {
    Region region(kWidth, kHeight);
    std::vector<u8> out(static_cast<std::size_t>(kWidth) * kHeight * 3);
    for (auto _ : state) {
        region.getPixels(0, -1, {0, 0, kWidth, kHeight, kWidth, kHeight}, kPixelRGB8,
                         static_cast<std::int64_t>(out.size()), out.data(), 0, 0, nullptr);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(readPixels)->Iterations(5);

void convertPixelValues(benchmark::State& state) {
    const std::vector<float> in(static_cast<std::size_t>(kWidth) * kHeight * 3);
    std::vector<u8> out(in.size());
    for (auto _ : state) {
        OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, in.data(), OIIO::TypeDesc::UINT8,
                                   out.data(), static_cast<int>(out.size()));
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(convertPixelValues)->Iterations(5);

}  // namespace

int main(int argc, char** argv) {
    OIIO::attribute("threads", 1);
    Comparison table(argc, argv);
    table.row("fragment: new, clear, add, delete", "fragmentRound", "structCopy",
              "copy of as many bytes", 100.0);
    table.row("getPixels, 1920 x 1080 to RGB8", "readPixels", "convertPixelValues",
              "convert_pixel_values", 1.0 / 3.0);
    return 0;
}
