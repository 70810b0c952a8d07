// Fragments and the read-out of regions beside what does no more than move the same bytes.

#include <OpenImageIO/imageio.h>
#include <benchmark/benchmark.h>

#include <algorithm>
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

/// Two regions of one size, written all over, with the block of the one.
struct Transfer {
    Transfer() : block(static_cast<std::size_t>(from.getBuffer(nullptr, 0)), 1), copy(block) {
        from.clear();
        to.clear();
    }
    Region from{kWidth, kHeight}, to{kWidth, kHeight};
    std::vector<u8> block, copy;
};

Transfer& transfer() {
    static Transfer regions;
    return regions;
}

void copyBytes(benchmark::State& state) {
    Transfer& t = transfer();
    for (auto _ : state) {
        std::memcpy(t.copy.data(), t.block.data(), t.block.size());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(copyBytes)->Iterations(3);

void getBlock(benchmark::State& state) {
    Transfer& t = transfer();
    for (auto _ : state)
        t.from.getBuffer(t.block.data(), static_cast<std::int64_t>(t.block.size()));
}
BENCHMARK(getBlock)->Iterations(3);

void setBlock(benchmark::State& state) {
    Transfer& t = transfer();
    t.from.getBuffer(t.copy.data(), static_cast<std::int64_t>(t.copy.size()));
    for (auto _ : state)
        t.to.setBuffer(t.copy.data());
}
BENCHMARK(setBlock)->Iterations(3);

void mergeRegions(benchmark::State& state) {
    Transfer& t = transfer();
    for (auto _ : state)
        t.to.copyFrom(t.from);
}
BENCHMARK(mergeRegions)->Iterations(3);

constexpr int kTile = 64;

/// All tiles of the picture from one that is moved about, as a render merges them.
void mergeTiles(benchmark::State& state) {
    Transfer& t = transfer();
    Region tile(kTile, kTile);
    for (auto _ : state) {
        for (int y = 0; y < kHeight; y += kTile) {
            for (int x = 0; x < kWidth; x += kTile) {
                tile.setRect(x, y, x + kTile, y + kTile);
                t.to.copyFrom(tile);
            }
        }
    }
}
BENCHMARK(mergeTiles)->Iterations(3);

/// The same rows by memcpy, each tile's from one place to another in a flat picture.
void copyTileRows(benchmark::State& state) {
    Transfer& t = transfer();
    constexpr std::size_t kSizes[] = {12, 12, 4, 12, 4, 12, 8, 12, 12, 12};
    for (auto _ : state) {
        for (std::size_t y = 0; y < kHeight; y += kTile) {
            for (std::size_t x = 0; x < kWidth; x += kTile) {
                u8* plane = t.copy.data();
                const u8* from = t.block.data();
                for (const std::size_t size : kSizes) {
                    for (std::size_t row = y; row < std::min<std::size_t>(kHeight, y + kTile);
                         ++row, from += kTile * size)
                        std::memcpy(plane + (row * kWidth + x) * size, from, kTile * size);
                    plane += size * kWidth * kHeight;
                }
                benchmark::ClobberMemory();
            }
        }
    }
}
BENCHMARK(copyTileRows)->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
    OIIO::attribute("threads", 1);
    Comparison table(argc, argv);
    table.row("fragment: new, clear, add, delete", "fragmentRound", "structCopy",
              "copy of as many bytes", 100.0);
    table.row("getPixels, 1920 x 1080 to RGB8", "readPixels", "convertPixelValues",
              "convert_pixel_values", 1.0 / 3.0);
    constexpr double kCopy = 1.0 / 0.8;
    table.row("getBuffer, 1920 x 1080, 10 channels", "getBlock", "copyBytes", "memcpy", kCopy);
    table.row("setBuffer into a warm region", "setBlock", "copyBytes", "memcpy", kCopy);
    table.row("copyFrom, the same rectangle", "mergeRegions", "copyBytes", "memcpy", kCopy);
    table.row("copyFrom, tiles of 64 x 64", "mergeTiles", "copyTileRows", "memcpy of rows", kCopy);
    return 0;
}
