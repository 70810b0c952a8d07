#pragma once

#include <vector>

#include <benchmark/benchmark.h>

#include "leaf_material.h"
#include "pelk/contract/material.h"

/// A renderer without lights, surroundings and further surfaces.
class BareRenderer final : public PelkRenderer {
public:
    BareRenderer() { sequenceData.numThreads = 1; }
    void evalEnvironment(PelkContext&) override {}
    void traceRay(PelkContext&) override {}
    StringTable* getStringTable() override { return nullptr; }
};

/// A material in a frame, reached as hosts reach it, and a hit.
template <class Desc>
class BareScene {
public:
    explicit BareScene(std::vector<PelkPluginParameter*> parameters) {
        material = static_cast<PelkMaterial*>(desc.newPlugin(nullptr));
        for (PelkPluginParameter* parameter : parameters)
            material->setParameter(parameter);
        material->renderBegin(renderer);
        material->frameBegin(renderer);
        bsdf = findInterface<BSDFInterface>(material);
        context.threadData = &thread;
        context.renderer = &renderer;
        context.rayType = kRayCamera;
        context.hitID = 1;
    }
    ~BareScene() {
        material->frameEnd(renderer);
        material->renderEnd(renderer);
        desc.deletePlugin(material);
    }

    PelkContext context;
    BSDFInterface* bsdf;

private:
    Desc desc;
    BareRenderer renderer;
    ThreadData thread;
    PelkMaterial* material;
};

/// Asks for a sampler; the compiler knows neither whom it asks nor what becomes of the answer.
inline BSDFSampler* ask(BSDFInterface* bsdf, PelkContext& context) {
    benchmark::DoNotOptimize(bsdf);
    BSDFSampler* sampler = bsdf->getBSDF(context, 0);
    benchmark::DoNotOptimize(sampler);
    return sampler;
}

/// The yardstick of what materials add: one call that a compiler can't see through.
inline void virtualCall(benchmark::State& state) {
    Leaf leaf;
    PelkContext context;
    for (auto _ : state)
        ask(&leaf, context);
}
