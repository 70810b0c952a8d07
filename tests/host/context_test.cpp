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
    const struct {
        const char* what;
        TextureInterface* texture;
        int priority;
        TextureInterface* holds;
        int holdingPriority;
    } steps[] = {
        {"no texture overrides nothing", nullptr, 100, nullptr, INT_MIN},
        {"the least priority is enough at first", &first, INT_MIN, &first, INT_MIN},
        {"higher", &second, 3, &second, 3},
        {"equal, the later one", &first, 3, &first, 3},
        {"lower", &second, 2, &first, 3},
        {"no texture does not end an override", nullptr, 9, &first, 3},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        context.setEnvironment(step.texture, step.priority, 1);
        EXPECT_EQ(context.environment, step.holds);
        EXPECT_EQ(context.environmentPriority, step.holdingPriority);
    }
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
    const struct {
        const char* what;
        PelkVolume* before;
        Color transparency;
        PelkVolume* after;
    } cases[] = {
        {"just below the bound", nullptr, {2.9e-6f, 0, 0}, nullptr},
        {"just above the bound", nullptr, {3.1e-6f, 0, 0}, &own},
        {"another volume stays whatever the transparency", &earlier, Color(0), &earlier},
    };
    sampler.volume = &own;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        context.surfaceVolume = c.before;
        sampler.transparency = c.transparency;
        PelkVolume* during = nullptr;
        context.onLight = [&](BSDFSampler*) { during = context.surfaceVolume; };
        shadeBSDF(context, &sampler);
        EXPECT_EQ(during, c.before ? c.before : &own) << "not set while it is shaded";
        EXPECT_EQ(context.surfaceVolume, c.after);
    }
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
