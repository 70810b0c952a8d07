// The sampling of glossy lobes, and a ramp material asked for a light, beside calls of powf, the
// unit in which such routines are reckoned, and a virtual call.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "bare_scene.h"
#include "comparison.h"
#include "pelk/contract/plugin_parameters.h"
#include "pelk/materials/maya/mtl_maya_ramp.h"
#include "pelk/shading_math/exponential_lobe.h"
#include "pelk/shading_math/gtr_lobe.h"
#include "pelk/shading_math/warped_lobe.h"

using namespace Tarnkit;

namespace {

/// One hit's arguments: random numbers, a roughness and a view.
struct Hit {
    float u, v, alpha;
    Vector d;
};

/// Enough of them that the branches can't be learnt, few enough to stay in the cache.
const std::vector<Hit>& hits() {
    static const std::vector<Hit> all = [] {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        std::vector<Hit> made(1024);
        for (Hit& hit : made) {
            const Vector view{unit(random) - 0.5f, unit(random) - 0.5f, -0.1f - unit(random)};
            hit = {unit(random), unit(random), 0.1f + 0.8f * unit(random), normalizeGuarded(view)};
        }
        return made;
    }();
    return all;
}

/// Runs `sample` on one hit after the other and keeps what it answers.
template <class Sample>
void forHits(benchmark::State& state, Sample sample) {
    const std::vector<Hit>& all = hits();
    std::size_t i = 0;
    for (auto _ : state) {
        auto result = sample(all[i++ % all.size()]);
        benchmark::DoNotOptimize(result);
    }
}

void sampleGtr(benchmark::State& state, int type, float gamma) {
    const Matrix frame;
    forHits(state, [&](const Hit& hit) {
        float pdf, weight;
        const Vector r =
            sampleGTR(hit.u, hit.v, hit.alpha, type, gamma, hit.d, frame, pdf, weight, 0);
        return r.x + pdf + weight;
    });
}
void ggxSample(benchmark::State& state) {
    sampleGtr(state, kGtrGgx, 2.0f);
}
BENCHMARK(ggxSample);
void splineSample(benchmark::State& state) {
    sampleGtr(state, kGtrFreeTail, 1.5f);
}
BENCHMARK(splineSample);

void ggxEval(benchmark::State& state) {
    const Matrix frame;
    const Vector n{0, 0, 1};
    forHits(state, [&](const Hit& hit) {
        float pdf;
        const float value =
            evalGTR(hit.d, mirrored(hit.d, n), hit.alpha, kGtrGgx, 2, n, frame, frame, pdf, 0);
        return value + pdf;
    });
}
BENCHMARK(ggxEval);

void exponentialSample(benchmark::State& state) {
    const Matrix frame;
    forHits(state, [&](const Hit& hit) {
        float pdf;
        return sampleExponential(hit.u, hit.v, hit.alpha, hit.d, frame, pdf).x + pdf;
    });
}
BENCHMARK(exponentialSample);

void warpedSample(benchmark::State& state) {
    const Matrix frame;
    forHits(state, [&](const Hit& hit) {
        float pdf;
        return sampleWarpedLobe(hit.u, hit.v, hit.alpha, hit.d, frame, pdf, frame).x + pdf;
    });
}
BENCHMARK(warpedSample);

/// A ramp material with three points in each ramp that a light asks for, and its answer for lights
/// from one direction after the other.
void rampEval(benchmark::State& state) {
    TexturedFloatListParameter positions("color_positions", {{0.0f}, {0.5f}, {1.0f}}),
        specularPositions("specular_positions", {{0.0f}, {0.5f}, {1.0f}}),
        rollOffPositions("specularRollOff_positions", {{0.0f}, {0.5f}, {1.0f}});
    const AColor grey{Color(0.5f), 1.0f}, white{Color(1), 1.0f};
    TexturedColorListParameter colors("color_colors", {{grey}, {white}, {grey}}),
        specularColors("specular_colors", {{grey}, {white}, {grey}});
    TexturedFloatListParameter rollOff("specularRollOff_values", {{1.0f}, {0.5f}, {0.25f}});
    IntListParameter kinds("color_interpolations", {1, 2, 1}),
        specularKinds("specular_interpolations", {1, 2, 1}),
        rollOffKinds("specularRollOff_interpolations", {1, 2, 1});
    BareScene<MtlRampPluginDesc> scene({&positions, &colors, &kinds, &specularPositions,
                                        &specularColors, &specularKinds, &rollOffPositions,
                                        &rollOff, &rollOffKinds});
    PelkContext& context = scene.context;
    context.normal = context.geomNormal = {0, 0, 1};
    context.rayDir = {0.6f, 0, -0.8f};
    BSDFSampler* const sampler = ask(scene.bsdf, context);
    BRDFSampler* const side = sampler->getBRDF(kFrontSide);
    forHits(state, [&](const Hit& hit) {
        Color light(1), unshadowed(1);
        return side->eval(context, -hit.d, light, unshadowed, kDeltaDensity,
                          kEvalDiffuse | kEvalSpecular);
    });
    scene.bsdf->releaseBSDF(context, sampler);
}
BENCHMARK(rampEval);
BENCHMARK(virtualCall);

void twelvePowf(benchmark::State& state) {
    forHits(state, [](const Hit& hit) {
        float sum = 0.0f;
        for (int k = 0; k < 12; ++k)
            sum += std::pow(hit.u + static_cast<float>(k), hit.v);
        return sum;
    });
}
BENCHMARK(twelvePowf);

}  // namespace

int main(int argc, char** argv) {
    Comparison table(argc, argv);
    // GGX may take 12 powf or 30 ns, whichever is more: the ratio holds on slow processors too.
    table.row("GGX: sample with density", "ggxSample", "twelvePowf", "12 powf (limit: or 30 ns)",
              1.0);
    table.row("GGX: eval with density", "ggxEval", "twelvePowf", "12 powf", 1.0);
    table.row("free tail: sample with density", "splineSample", "twelvePowf", "12 powf", 4.0);
    table.row("exponential: sample with density", "exponentialSample", "twelvePowf", "12 powf",
              1.0);
    table.row("warped: sample with density", "warpedSample", "twelvePowf", "12 powf", 1.5);
    table.row("MtlMayaRamp: eval of a light", "rampEval", "twelvePowf", "12 powf", 2.0);
    table.row("MtlMayaRamp: eval of a light", "rampEval", "virtualCall", "virtual call", 100.0);
    return 0;
}
