#include "fake_host/fake_renderer.h"

#include <gtest/gtest.h>

#include <tuple>

#include "fake_host/print.h"

FakeRenderer::FakeRenderer() {
    sequenceData.log = &log;
    sequenceData.lightManager = this;
    sequenceData.giEngine = &gi;
    sequenceData.numThreads = 1;
    sequenceData.maxRayDepth = 5;
}

FakeContext::FakeContext(FakeRenderer& fakeRenderer, ThreadData& thread) {
    threadData = &thread;
    renderer = &fakeRenderer;
    shadeFlags = kShadeAlphaCounts;
    rayDir = rayDir2 = {0.0f, 0.0f, -1.0f};
    rayType = kRayCamera;
    rayContribution = 1.0f;
    rayWeight = rayWeight2 = spawnWeight = Color(1);
    hitPoint = refractionOrigin = {1.0, 2.0, 3.0};
    normal = geomNormal = faceNormal = {0.0f, 0.0f, 1.0f};
    rayDerivX = {0.5f, 0.0f, 0.0f};
    rayDerivY = {0.0f, 0.5f, 0.25f};
    hitLink = 0x1234;
    hitID = 1;
    setResults(*this, Color(-77), Color(-77), Color(-77), Color(-77));
}

FakeContext::~FakeContext() {
    EXPECT_EQ(spawnedOut, 0) << "a spawned context was not released";
}

void FakeContext::prepareToSpawn(int count) {
    while (static_cast<int>(spawned.size()) < count)
        spawned.push_back(std::make_unique<FakeContext>());
}

PelkContext* FakeContext::newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                            const Vector& direction) {
    if (note("newSpawnedContext"))
        spawnRequests.push_back({index, weight, rayFlags, direction});
    if (refusesToSpawn)
        return nullptr;
    prepareToSpawn(spawnedOut + 1);
    FakeContext& context = *spawned[spawnedOut++];
    static_cast<PelkContext&>(context) = PelkContext();
    context.threadData = threadData;
    context.renderer = renderer;
    context.parentContext = this;
    context.spawnOrigin = hitPoint + Vector(0.0f, 0.0f, 0.25f);
    context.spawnWeight = weight;
    context.spawnFlags = rayFlags;
    return &context;
}

void FakeContext::releaseContext() {
    auto* parent = static_cast<FakeContext*>(parentContext);
    EXPECT_EQ(this, parent->spawned[--parent->spawnedOut].get()) << "not the last one out";
}

void FakeContext::computeDirectLighting(Color& out, BSDFSampler* sampler) {
    note("computeDirectLighting");
    if (onLight)
        onLight(sampler);
    out = directLight;
}

void FakeContext::shadeWithBSDF(BSDFSampler* bsdf, int flag) {
    note("shadeWithBSDF");
    PelkContext::shadeWithBSDF(bsdf, flag);
}

namespace {

// Fields that materials change around a call into another, and some that they have no cause to.
auto rayAndHit(const PelkContext& c) {
    return std::tie(c.fragmentList, c.shadeFlags, c.rayDir, c.rayOrigin, c.rayDir2, c.rayMinT,
                    c.rayMaxT, c.time, c.rayType, c.traceDepth, c.giDepth, c.spawnOrigin, c.screenX,
                    c.screenY, c.originDerivX, c.originDerivY, c.rayDerivX, c.rayDerivY,
                    c.rayClipDistance, c.rayContribution, c.rayWeight, c.rayWeight2, c.spawnWeight,
                    c.spawnFlags, c.gathersBeyond, c.environment, c.environmentPriority,
                    c.hitMapping, c.hitObject, c.hitLink, c.hitPoint, c.normal, c.geomNormal,
                    c.backSide, c.faceNormal, c.refractionOrigin, c.flippedSide, c.hitID);
}

}  // namespace

void expectRayAndHitAsBefore(const PelkContext& before, const PelkContext& context) {
    EXPECT_EQ(rayAndHit(context), rayAndHit(before)) << "a field was not put back";
}
