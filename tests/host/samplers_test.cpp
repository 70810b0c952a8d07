#include "frame/samplers.h"

#include "fake_host/fake_renderer.h"
#include "fake_host/recorders.h"

namespace {

/// A sampler with the bodies of the base classes, but for what a test sets.
class BaseSampler : public BSDFSampler, public BRDFSampler {
public:
    bool hasFace[2] = {true, true};
    Color diffuse, transparency, glow;
    Vector diffuseNormal{0.0f, 0.0f, 1.0f};
    u32 ownRay = 0;  ///< ray flags of its own ray; 0: it has none
    Color ownRayWeight;
    float setupWeight = 1.0f;

    BRDFSampler* getBRDF(BSDFSide side) override { return hasFace[side] ? this : nullptr; }
    Color getDiffuseColor(Color& lightColor) override { return lightColor * diffuse; }
    Vector getDiffuseNormal(PelkContext&) override { return diffuseNormal; }
    Color getTransparency(PelkContext&) override { return transparency; }
    Color getSelfIllumination(PelkContext&) override { return glow; }
    PelkContext* getNewContext(PelkContext& context, int& sampler, int) override {
        sampler = 3;
        return ownRay ? context.newSpawnedContext(0, ownRayWeight, ownRay, {1, 0, 0}) : nullptr;
    }
    float setupContext(PelkContext&, PelkContext&, float, int sample) override {
        EXPECT_EQ(sample, 3) << "not the sample that getNewContext named";
        return setupWeight;
    }
};

/// Looks at the normal about which indirect light is gathered.
class NormalGi : public FakeGi {
public:
    Vector seen;
    void irradiance(Color& out, PelkContext& context) override {
        seen = context.normal;
        FakeGi::irradiance(out, context);
    }
};

class SamplersTest : public testing::Test {
protected:
    SamplersTest() { renderer.sequenceData.giEngine = &gi; }

    NormalGi gi;
    FakeRenderer renderer;
    ThreadData thread;
    BaseSampler sampler;
};

TEST_F(SamplersTest, TraceForwardIsIndirectLightAndGlow) {
    gi.light = {1.0f, 0.5f, 2.0f};
    sampler.diffuse = {0.5f, 1.0f, 0.25f};
    sampler.glow = {0.0f, 0.0f, 3.0f};
    // Opacity stops at 0 where the surface brightens what is behind it.
    sampler.transparency = {0.5f, 0.0f, 2.0f};
    sampler.diffuseNormal = {0.6f, 0.0f, 0.8f};
    FakeContext context(renderer, thread);
    sampler.traceForward(context, 1);
    EXPECT_EQ(resultsOf(context),
              (Results{{0.25f, 0.5f, 3.0f}, {0.5f, 0, 2}, {0.5f, 1, 0}, {0.5f, 0, 2}}));
    EXPECT_EQ(gi.seen, sampler.diffuseNormal) << "bump is missing in indirect light";
    EXPECT_EQ(context.normal, Vector(0, 0, 1)) << "normal not restored";

    sampler.traceForward(context, 0);
    EXPECT_EQ(context.resultColor, sampler.glow) << "indirect light was not asked for";

    renderer.sequenceData.giEngine = nullptr;
    sampler.traceForward(context, 1);
    EXPECT_EQ(context.resultColor, sampler.glow) << "a host without indirect light gives none";
}

TEST_F(SamplersTest, OwnRayIsWeightedNotedAndReleased) {
    const Color weight{0.5f, 0.25f, 0.125f}, traced{1.0f, 2.0f, 4.0f};
    renderer.tracedColor = {1.0f, 4.0f, 16.0f};
    sampler.ownRayWeight = weight;
    sampler.setupWeight = 2.0f;
    sampler.glow = Color(1);
    using Noted = std::vector<std::pair<int, Color>>;
    const auto notedWith = [&](u32 rayFlags) {
        sampler.ownRay = rayFlags;
        FakeContext context(renderer, thread);
        sampler.traceBSDFForward(context, 1);
        EXPECT_EQ(context.resultColor, rayFlags ? Color(1) + traced : Color(1));
        RecordingFragment fragment;
        context.resultFragment = &fragment;
        sampler.traceBSDFForward(context, 1);
        return fragment.aliases;
    };
    EXPECT_EQ(notedWith(0), Noted());
    EXPECT_EQ(notedWith(kSpawnMirror), (Noted{{102, traced}, {139, weight * 2.0f}}));
    EXPECT_EQ(notedWith(kRayRefract), (Noted{{103, traced}}));
}

TEST_F(SamplersTest, SamplerWithoutAFaceIsClear) {
    sampler.hasFace[0] = sampler.hasFace[1] = false;
    sampler.ownRay = kSpawnMirror;
    FakeContext context(renderer, thread);
    EXPECT_EQ(sampler.getBSDFTransparency(context), Color(1));
    sampler.traceBSDFForward(context, 1);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
    EXPECT_TRUE(context.spawnRequests.empty());

    sampler.hasFace[1] = true;
    sampler.transparency = Color(0.25f);
    EXPECT_EQ(sampler.getBSDFTransparency(context), Color(0.25f)) << "the other side answers too";
}

}  // namespace
