#include "fake_host/fake_host.h"

namespace {

class Mtl2SidedTest : public FakeHost {
protected:
    Mtl2SidedTest() {
        setParams(mtl, {{"front", &front}, {"back", &back}, {"translucency", Color(0.5f)}});
        front.sampler.evaluated = back.sampler.evaluated = Color(1);
    }

    /// What of light on the far side shows.
    Color lightFromBeyond() {
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        Color light(1), unshadowed(1);
        const Color seen = sampler->getBRDF(kFrontSide)
                               ->eval(context, {0, 0, -1}, light, unshadowed, 1, kEvalDiffuse);
        mtl.releaseBSDF(context, sampler);
        return seen;
    }

    RecordingMaterial front, back;
    PelkMaterial& mtl = make("Mtl2Sided");
    FakeContext context = hit();
};

TEST_F(Mtl2SidedTest, SamplersAreMadeOnTheSideThatWasHitFirst) {
    const struct {
        const char* what;
        int backSide, flippedSide;
        SeenSide front, back;
    } cases[] = {
        {"front", 0, 0, {0, 0, 1}, {1, 0, -1}},
        {"back, turned already", 1, 1, {0, 0, -1}, {1, 0, 1}},
    };
    front.sampler.color = Color(0.25f);
    back.sampler.color = Color(0.5f);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"force_1sided", true}, {"translucency", Color(0)}});
        context.backSide = c.backSide;
        context.flippedSide = c.flippedSide;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(sideOf(front.seen), c.front);
        EXPECT_EQ(sideOf(back.seen), c.back);
        EXPECT_EQ(context.resultColor, Color(c.backSide ? 0.5f : 0.25f));
        EXPECT_EQ(front.seenFlags, 1);
        expectRayAndHitAsBefore(before, context);

        startFrame(mtl, {{"force_1sided", false}});
        mtl.shade(context);
        EXPECT_EQ(back.seenFlags, 0);
    }
}

TEST_F(Mtl2SidedTest, TranslucencyIsBlendedWithItsTexture) {
    startFrame(mtl, {{"back", static_cast<PluginBase*>(nullptr)}});
    EXPECT_EQ(lightFromBeyond(), Color(0.5f)) << "the front stands in for the back";
    FakeTexture texture{AColor{Color(1, 0.5f, 0), 2.0f}};
    startFrame(mtl, {{"translucency_tex", &texture}, {"translucency_tex_mult", 0.5f}});
    EXPECT_EQ(lightFromBeyond(), Color(0.75f, 0.5f, 0.25f));
}

}  // namespace
