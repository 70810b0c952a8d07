#include "fake_host/fake_renderer.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>

#include "fake_host/call_log.h"
#include "fake_host/print.h"

void FakeLog::warning(const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    warnings.push_back(text);
}

void FakeLights::computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) {
    note("computeDirectLight");
    if (onLight)
        onLight(context, sampler);
    out = light;
}

int FakeCamera::mapToScreen(PelkContext& context, ScreenPoint& out, float*) {
    note("mapToScreen");
    seenHit = context.hitPoint;
    out = point;
    return answer;
}

void FakeGi::irradiance(Color& out, PelkContext&) {
    note("irradiance");
    out = light;
}

int FakeGi::usesLightMis(PelkContext&) {
    note("usesLightMis");
    return mis;
}

void FakeGi::evalMatte(PelkContext&, Color& unshadowed, Color& shadowed) {
    note("evalMatte");
    unshadowed = matteUnshadowed;
    shadowed = matteShadowed;
}

StringHandle FakeStringTable::intern(const char* text) {
    return {ids.try_emplace(text, static_cast<u32>(ids.size() + 1)).first->second};
}

FakeRenderer::FakeRenderer() {
    sequenceData.log = &log;
    sequenceData.lightManager = &lights;
    sequenceData.giEngine = &gi;
    sequenceData.numThreads = 1;
    sequenceData.maxRayDepth = 5;
}

void FakeRenderer::evalEnvironment(PelkContext& context) {
    if (note("evalEnvironment"))
        environmentReads.push_back(context);
    context.resultColor = environmentColor;
}

void FakeRenderer::traceRay(PelkContext& context) {
    if (note("traceRay"))
        traced.push_back(context);
    context.traceResult = tracedColor;
    context.traceAlpha = tracedAlpha;
}

FakeContext::FakeContext(FakeRenderer& fakeRenderer, ThreadData& thread) {
    threadData = &thread;
    renderer = &fakeRenderer;
    shadeFlags = kShadeAlphaCounts;
    rayDir = rayDir2 = {0.0f, 0.0f, -1.0f};
    rayOrigin = {1.0, 2.0, 8.0};
    rayMaxT = kRayFar;
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
    EXPECT_EQ(spawnedOut(), 0) << "a spawned context was not released";
}

void FakeContext::prepareToSpawn(int count) {
    while (static_cast<int>(spawned.size()) < count)
        spawned.push_back(std::make_unique<FakeContext>());
}

int FakeContext::spawnedOut() const {
    int count = 0;
    for (const auto& context : spawned)
        count += context->isOut;
    return count;
}

void FakeContext::releaseContext() {
    note("releaseContext");
    EXPECT_TRUE(isOut) << "released a context that is not out";
    isOut = false;
}

PelkContext* FakeContext::newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                            const Vector& direction) {
    if (note("newSpawnedContext"))
        spawnRequests.push_back({index, weight, rayFlags, direction});
    if (refusesToSpawn)
        return nullptr;
    const int out = spawnedOut();
    prepareToSpawn(out + 1);
    FakeContext* context = nullptr;
    for (const auto& candidate : spawned)
        context = candidate->isOut ? context : candidate.get();
    context->isOut = true;
    static_cast<PelkContext&>(*context) = PelkContext();
    context->threadData = threadData;
    context->renderer = renderer;
    context->parentContext = spawnsOrphans ? nullptr : this;
    context->spawnOrigin = hitPoint + Vector(0.0f, 0.0f, 0.25f);
    context->rayType = (rayType & (kRayCamera | kRayReflect | kRayRefract | kRayGi)) |
                       (rayFlags & (kRayReflect | kRayRefract));
    context->traceDepth = traceDepth + 1;
    context->giDepth = giDepth;
    context->spawnWeight = weight;
    context->spawnFlags = rayFlags;
    context->rayWeight = rayWeight * weight;
    context->rayWeight2 = rayWeight2 * weight;
    return context;
}

void FakeContext::computeDirectLighting(Color& out, BSDFSampler* sampler) {
    note("computeDirectLighting");
    if (onLight)
        onLight(sampler);
    out = directLight;
}

PelkVolume* FakeContext::currentVolume(PelkVolume* skip) {
    note("currentVolume");
    return volumeAround == skip ? nullptr : volumeAround;
}

void FakeContext::flipSide() {
    note("flipSide");
    PelkContext::flipSide();
}

void FakeContext::setEnvironment(TextureInterface* texture, int priority, int flag) {
    if (note("setEnvironment"))
        environmentRequests.push_back({texture, priority, flag});
    PelkContext::setEnvironment(texture, priority, flag);
}

void FakeContext::shadeWithBSDF(BSDFSampler* bsdf, int flag) {
    note("shadeWithBSDF");
    PelkContext::shadeWithBSDF(bsdf, flag);
}

void expectRayAndHitAsBefore(const PelkContext& before, const PelkContext& context) {
#define SAME(field) EXPECT_EQ(context.field, before.field) << #field " was not put back"
    SAME(fragmentList);
    SAME(shadeFlags);
    SAME(rayDir);
    SAME(rayOrigin);
    SAME(rayDir2);
    SAME(rayMinT);
    SAME(rayMaxT);
    SAME(time);
    SAME(rayType);
    SAME(traceDepth);
    SAME(giDepth);
    SAME(spawnOrigin);
    SAME(screenX);
    SAME(screenY);
    SAME(originDerivX);
    SAME(originDerivY);
    SAME(rayDerivX);
    SAME(rayDerivY);
    SAME(rayClipDistance);
    SAME(rayContribution);
    SAME(rayWeight);
    SAME(rayWeight2);
    SAME(spawnWeight);
    SAME(spawnFlags);
    SAME(gathersBeyond);
    SAME(environment);
    SAME(environmentPriority);
    SAME(hitMapping);
    SAME(hitObject);
    SAME(hitLink);
    SAME(hitPoint);
    SAME(normal);
    SAME(geomNormal);
    SAME(backSide);
    SAME(faceNormal);
    SAME(refractionOrigin);
    SAME(flippedSide);
    SAME(hitID);
#undef SAME
}
