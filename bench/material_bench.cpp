// What materials made of others add to a hit, in virtual calls: the least that a hop from one
// material to the next can cost.

#include <vector>

#include <benchmark/benchmark.h>

#include "bare_scene.h"
#include "comparison.h"
#include "pelk/contract/plugin_parameters.h"
#include "pelk/materials/composite/mtl_multi.h"
#include "pelk/materials/composite/mtl_override.h"
#include "pelk/materials/composite/mtl_render_stats.h"
#include "pelk/materials/matte/mtl_wrapper.h"

namespace {

constexpr int kNumIds = 100;

/// The same id everywhere.
class IdTexture final : public Plugin, public TextureIntInterface {
public:
    PluginInterface* getInterface(u64 id) override {
        return id == TextureIntInterface::kInterfaceID ? static_cast<TextureIntInterface*>(this)
                                                       : nullptr;
    }
    PluginBase* getPlugin() override { return this; }
    int getTexInt(PelkContext&) override { return kNumIds - 1; }
};

BENCHMARK(virtualCall);

template <class Desc>
void askAndRelease(benchmark::State& state, const char* baseName = "base_mtl") {
    Leaf leaf;
    PluginParameter base(baseName, &leaf);
    BareScene<Desc> scene({&base});
    for (auto _ : state) {
        BSDFSampler* sampler = ask(scene.bsdf, scene.context);
        scene.bsdf->releaseBSDF(scene.context, sampler);
    }
}

void overrideSampler(benchmark::State& state) {
    askAndRelease<MtlOverrideDesc>(state);
}
BENCHMARK(overrideSampler);

void renderStatsSampler(benchmark::State& state) {
    askAndRelease<MtlRenderStatsDesc>(state);
}
BENCHMARK(renderStatsSampler);

void wrapperSampler(benchmark::State& state) {
    askAndRelease<MtlWrapperDesc>(state, "base_material");
}
BENCHMARK(wrapperSampler);

/// The last of many ids. `stride` 0 asks for the same hit again, else each is another.
void askMulti(benchmark::State& state, int stride) {
    Leaf leaf;
    IdTexture idTexture;
    std::vector<int> idValues;
    for (int i = 0; i < kNumIds; ++i)
        idValues.push_back(i);
    PluginListParameter mtls("mtls_list", std::vector<PluginBase*>(kNumIds, &leaf));
    IntListParameter ids("ids_list", idValues);
    TextureParameter generator("mtlid_gen", &idTexture);
    BareScene<MtlMultiDesc> scene({&mtls, &ids, &generator});
    for (auto _ : state) {
        ask(scene.bsdf, scene.context);
        // Never 0, which is the key of no hit.
        scene.context.hitID = (scene.context.hitID + stride) | 1;
    }
}

void multiLastId(benchmark::State& state) {
    askMulti(state, 2);
}
BENCHMARK(multiLastId);

void multiSecondAsk(benchmark::State& state) {
    askMulti(state, 0);
}
BENCHMARK(multiSecondAsk);

}  // namespace

int main(int argc, char** argv) {
    Comparison table(argc, argv);
    const char* peer = "virtual call";
    table.row("MtlOverride, sampler and release", "overrideSampler", "virtualCall", peer, 25.0);
    table.row("MtlRenderStats, the same", "renderStatsSampler", "virtualCall", peer, 25.0);
    table.row("MtlWrapper, the same", "wrapperSampler", "virtualCall", peer, 25.0);
    table.row("MtlMulti, last of 100 ids", "multiLastId", "virtualCall", peer, 100.0);
    table.row("MtlMulti, the same hit again", "multiSecondAsk", "virtualCall", peer, 12.0);
    return 0;
}
