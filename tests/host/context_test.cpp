#include "frame/context.h"

#include <climits>

#include "fake_host/call_log.h"
#include "fake_host/fake_renderer.h"
#include "fake_host/recorders.h"
#include "frame/samplers.h"

namespace {

class ContextTest : public testing::Test {
protected:
    FakeRenderer renderer;
    ThreadData thread;
    FakeContext context{renderer, thread};
    RecordingSampler sampler;
};

TEST_F(ContextTest, FlipTurnsAllNormalsAndTogglesBetween0And1) {
    context.normal = {0.6f, 0, 0.8f};
    context.faceNormal = {0, 0.6f, 0.8f};
    context.backSide = 5;  // any value but 0 is the back
    context.flipSide();
    EXPECT_EQ(context.normal, Vector(-0.6f, 0, -0.8f));
    EXPECT_EQ(context.faceNormal, Vector(0, -0.6f, -0.8f));
    EXPECT_EQ(context.geomNormal, Vector(0, 0, -1));
    EXPECT_EQ(context.backSide, 0);
    EXPECT_EQ(context.flippedSide, 1);
    context.flipSide();
    EXPECT_EQ(context.backSide, 1);
    EXPECT_EQ(context.flippedSide, 0);
}

TEST_F(ContextTest, EnvironmentOfTheHighestPriorityHolds) {
    FakeTexture first, second;
    using Held = std::pair<TextureInterface*, int>;
    const auto set = [&](TextureInterface* texture, int priority) {
        context.setEnvironment(texture, priority, 1);
        return Held(context.environment, context.environmentPriority);
    };
    EXPECT_EQ(set(nullptr, 100), Held(nullptr, INT_MIN)) << "no texture overrides nothing";
    EXPECT_EQ(set(&first, INT_MIN), Held(&first, INT_MIN)) << "the least is enough at first";
    EXPECT_EQ(set(&second, 3), Held(&second, 3)) << "higher";
    EXPECT_EQ(set(&first, 3), Held(&first, 3)) << "equal, the later one";
    EXPECT_EQ(set(&second, 2), Held(&first, 3)) << "lower";
    EXPECT_EQ(set(nullptr, 9), Held(&first, 3)) << "no texture does not end an override";
}

TEST_F(ContextTest, ShadedResultIsDirectLightAndTracedLight) {
    context.directLight = {1, 0, 0.5f};
    sampler.color = {0.25f, 0.5f, 0};
    sampler.transparency = {0, 1.5f, 0.75f};
    const Results shaded{{1.25f, 0.5f, 0.5f}, {0, 1.5f, 0.75f}, {1, 0, 0.25f}, {0, 1.5f, 0.75f}};
    context.shadeWithBSDF(&sampler, 1);
    EXPECT_EQ(resultsOf(context), shaded);
    setNothing(context);
    shadeBSDF(context, &sampler);
    EXPECT_EQ(resultsOf(context), shaded);

    // A shadow ray asks for the transparency alone.
    context.rayType = kRayShadow;
    callLog().clear();
    shadeBSDF(context, &sampler);
    EXPECT_EQ(resultsOf(context),
              (Results{{}, shaded.transparency, shaded.alpha, shaded.transparency}));
    EXPECT_FALSE(callLog().has("computeDirectLighting") || callLog().has("traceForward"));

    shadeBSDF(context, nullptr);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
}

TEST_F(ContextTest, VolumeOfTheSamplerStaysWhereTheSurfaceIsTransparent) {
    FakeVolume own, earlier;
    sampler.volume = &own;
    const auto volumeAfter = [&](PelkVolume* before, float transparency) {
        context.surfaceVolume = before;
        sampler.transparency = {transparency, 0, 0};
        PelkVolume* during = nullptr;
        context.onLight = [&](BSDFSampler*) { during = context.surfaceVolume; };
        shadeBSDF(context, &sampler);
        EXPECT_EQ(during, before ? before : &own) << "not set while it is shaded";
        return context.surfaceVolume;
    };
    EXPECT_EQ(volumeAfter(nullptr, 2.9e-6f), nullptr) << "just below the bound";
    EXPECT_EQ(volumeAfter(nullptr, 3.1e-6f), &own) << "just above the bound";
    EXPECT_EQ(volumeAfter(&earlier, 0), &earlier) << "stays whatever the transparency";
}

TEST_F(ContextTest, ReflectedDerivativesAreMirroredLikeTheRay) {
    // A mirror that turns x into z.
    context.rayDir = {1, 0, 0};
    context.rayDerivX = {0, 0.5f, 0};
    context.rayDerivY = {0.25f, 0, 1};
    PelkContext reflected;
    setReflectDerivs(context, reflected, {0, 0, 1}, 0, 1e18f);
    EXPECT_THAT(reflected.rayDerivX, VectorNear(Vector(0, 0.5f, 0), 1e-6f));
    EXPECT_THAT(reflected.rayDerivY, VectorNear(Vector(1, 0, 0.25f), 1e-6f));
    // A ray that isn't turned leaves no axis; it must not become a NaN.
    setReflectDerivs(context, reflected, context.rayDir, 0, 1e18f);
    EXPECT_EQ(reflected.rayDerivX, context.rayDerivX);
    EXPECT_EQ(reflected.rayDerivY, context.rayDerivY);
}

}  // namespace
