#include "pelk/contract/context.h"

#include "fake_host/call_log.h"
#include "fake_host/fake_renderer.h"
#include "fake_host/recorders.h"
#include "pelk/base/exception_msg.h"
#include "pelk/contract/samplers.h"

namespace {

class ContextTest : public testing::Test {
protected:
    FakeRenderer renderer;
    ThreadData thread;
    FakeContext context{renderer, thread};
    RecordingSampler sampler;
};

TEST_F(ContextTest, FlipTurnsAllNormalsAndTogglesBetween0And1) {
    context.faceNormal = {0, 0.6f, 0.8f};
    context.backSide = 5;  // any value but 0 is the back
    context.flipSide();
    EXPECT_EQ(sideOf(context), (SeenSide{0, 1, -1}));
    EXPECT_EQ(context.faceNormal + context.geomNormal, Vector(0, -0.6f, -1.8f));
}

TEST_F(ContextTest, ShadedResultIsDirectLightAndTracedLight) {
    FakeVolume volume;
    sampler.volume = &volume;
    context.directLight = {1, 0, 0.5f};
    context.onLight = [&](BSDFSampler*) { EXPECT_EQ(context.surfaceVolume, &volume); };
    sampler.color = {0.25f, 0.5f, 0};
    shadeBSDF(context, &sampler);
    EXPECT_EQ(resultsOf(context), (Results{{1.25f, 0.5f, 0.5f}, Color(0), Color(1), Color(0)}));
    EXPECT_EQ(context.surfaceVolume, nullptr) << "no ray goes in";

    // A shadow ray asks for the transparency alone.
    sampler.transparency = {0, 1.5f, 0.75f};
    context.rayType = kRayShadow;
    callLog().clear();
    shadeBSDF(context, &sampler);
    EXPECT_EQ(resultsOf(context),
              (Results{{}, sampler.transparency, {1, 0, 0.25f}, sampler.transparency}));
    EXPECT_EQ(context.surfaceVolume, &volume);
    EXPECT_FALSE(callLog().has("computeDirectLighting") || callLog().has("traceForward"));

    context.surfaceVolume = nullptr;
    context.rayType = kRayCamera;
    context.onLight = [](BSDFSampler*) { throw ExceptionMsg("no memory"); };
    EXPECT_THROW(shadeBSDF(context, &sampler), ExceptionMsg);
    EXPECT_EQ(context.surfaceVolume, nullptr) << "the volume goes where shading throws";
}

}  // namespace
