#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fake_host/call_log.h"
#include "pelk/contract/material.h"
#include "recording_log.h"

// A renderer without a scene: it answers what the test has set and remembers what it was asked.
// The names noted in the call log are those of the operations.

struct FakeGi : DefaultGlobalLightManager {
    Color light;  ///< the irradiance
    int mis = 0;
    Color matteUnshadowed, matteShadowed;

    void irradiance(Color& out, PelkContext&) override { out = light; }
    int usesLightMis(PelkContext&) override { return mis; }
    void evalMatte(PelkContext&, Color& unshadowed, Color& shadowed) override {
        unshadowed = matteUnshadowed;
        shadowed = matteShadowed;
    }
};

/// The renderer with its lights and its table of texts.
struct FakeRenderer : PelkRenderer, LightManager, StringTable {
    FakeRenderer();

    RecordingLog log;
    FakeGi gi;

    std::function<void(PelkContext&, BRDFSampler*)> onLight;  ///< shines on the sampler
    Color environmentColor;                                   ///< what evalEnvironment writes
    Color tracedColor, tracedAlpha;                           ///< what traceRay writes
    std::vector<PelkContext> traced;                          ///< the contexts as they came

    void evalEnvironment(PelkContext& context) override {
        note("evalEnvironment");
        context.resultColor = environmentColor;
    }
    void traceRay(PelkContext& context) override {
        if (note("traceRay"))
            traced.push_back(context);
        context.traceResult = tracedColor;
        context.traceAlpha = tracedAlpha;
    }
    void computeDirectLight(Color&, PelkContext& context, BRDFSampler* catcher) override {
        if (onLight)
            onLight(context, catcher);
    }
    StringTable* getStringTable() override { return this; }
    StringHandle intern(const char* text) override {
        return {ids.try_emplace(text, static_cast<u32>(ids.size() + 1)).first->second};
    }

private:
    std::map<std::string, u32> ids;
};

/// What newSpawnedContext was asked for.
struct SpawnRequest {
    int index;
    Color weight;
    u32 flags;
    Vector direction;
};

/// A hit in no scene. Fails the test if it goes while a spawned context is still out.
struct FakeContext : PelkContext {
    FakeContext() = default;
    /// A hit of a camera ray, straight down on the front of a plane.
    FakeContext(FakeRenderer& fakeRenderer, ThreadData& thread);
    ~FakeContext() override;
    FakeContext(const FakeContext&) = delete;
    FakeContext& operator=(const FakeContext&) = delete;

    Color directLight;                          ///< what computeDirectLighting writes
    std::function<void(BSDFSampler*)> onLight;  ///< looks at the sampler while it is lit
    bool refusesToSpawn = false;
    std::vector<SpawnRequest> spawnRequests;

    /// Makes the contexts that will be spawned now, so that the heap stays out of the hit.
    void prepareToSpawn(int count);

    PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                   const Vector& direction) override;
    void releaseContext() override;
    void computeDirectLighting(Color& out, BSDFSampler* sampler) override;
    void shadeWithBSDF(BSDFSampler* bsdf, int flag) override;

private:
    std::vector<std::unique_ptr<FakeContext>> spawned;
    int spawnedOut = 0;  ///< of these the first ones; the last one out goes back first
};

/// Fails the test if a field of the ray or the hit differs from what it was.
void expectRayAndHitAsBefore(const PelkContext& before, const PelkContext& context);
