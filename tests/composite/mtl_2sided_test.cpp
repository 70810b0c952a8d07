#include "fake_host/fake_host.h"

namespace {

constexpr PluginBase* kNone = nullptr;

class Mtl2SidedTest : public FakeHost {
protected:
    Mtl2SidedTest() {
        setParams(mtl, {{"front", &front}, {"back", &back}, {"translucency", Color(0.5f)}});
        front.sampler.evaluated = back.sampler.evaluated = Color(1);
    }

    /// What of light on the far side shows.
    Color lightFromBeyond(FakeContext& context) {
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        Color light(1), unshadowed(1);
        const Color seen = sampler->getBRDF(kFrontSide)
                               ->eval(context, {0, 0, -1}, light, unshadowed, 1, kEvalDiffuse);
        mtl.releaseBSDF(context, sampler);
        return seen;
    }

    RecordingMaterial front, back;
    PelkMaterial& mtl = make("Mtl2Sided", "leaf");
};

TEST_F(Mtl2SidedTest, SamplersAreMadeOnTheSideThatWasHitFirst) {
    const struct {
        const char* what;
        int backSide, flippedSide;
        SeenSide front, back;
    } cases[] = {
        {"front", 0, 0, {0, 0, 1}, {1, 0, -1}},
        {"back", 1, 0, {1, 0, 1}, {0, 0, -1}},
        {"back, turned already", 1, 1, {0, 0, -1}, {1, 0, 1}},
    };
    front.sampler.color = Color(0.25f);
    back.sampler.color = Color(0.5f);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"force_1sided", true}, {"translucency", Color(0)}});
        FakeContext context = hit();
        context.backSide = c.backSide;
        context.flippedSide = c.flippedSide;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(front.seenSide, c.front);
        EXPECT_EQ(back.seenSide, c.back);
        EXPECT_EQ(context.resultColor, Color(c.backSide ? 0.5f : 0.25f));
        EXPECT_EQ(front.seenFlags, 1);
        EXPECT_EQ(front.samplersOut + back.samplersOut, 0);
        expectRayAndHitAsBefore(before, context);

        startFrame(mtl, {{"force_1sided", false}});
        mtl.shade(context);
        EXPECT_EQ(back.seenFlags, 0);
        mtl.releaseBSDF(context, mtl.getBSDF(context, 0x11));
        EXPECT_EQ(back.seenFlags, 0x11);
    }
}

TEST_F(Mtl2SidedTest, TranslucencyIsBlendedWithItsTexture) {
    FakeTexture texture{AColor{Color(1, 0.5f, 0), 2.0f}};
    startFrame(mtl, {{"translucency_tex", &texture}, {"translucency_tex_mult", 0.5f}});
    FakeContext context = hit();
    EXPECT_EQ(lightFromBeyond(context), Color(0.75f, 0.5f, 0.25f));
}

TEST_F(Mtl2SidedTest, MissingPiecesHaveFixedAnswers) {
    FakeContext context = hit();
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent) << "before a frame";
    mtl.releaseBSDF(context, nullptr);

    startFrame(mtl, {{"back", kNone}});
    EXPECT_EQ(lightFromBeyond(context), Color(0.5f)) << "the front stands in for the back";
    EXPECT_EQ(log.count("getBSDF"), 2);

    front.givesSampler = false;
    front.takesNull = true;
    startFrame(mtl, {{"back", &back}});
    EXPECT_EQ(lightFromBeyond(context), Color(0.5f));
    startFrame(mtl, {{"front", kNone}, {"back", kNone}});
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
}

TEST_F(Mtl2SidedTest, OpaqueOnlyIfBothSidesAre) {
    front.opaqueFlags = 3;
    for (const int backFlags : {0, 1, 2, 3}) {
        back.opaqueFlags = backFlags;
        startFrame(mtl);
        EXPECT_EQ(mtl.getOpaqueFlags(), backFlags & 1 ? 3 : 2);
    }
    front.hiddenFaces = {EXT_OPAQUE_SHADEABLE};
    EXPECT_EQ(mtl.getOpaqueFlags(), 2);
}

TEST_F(Mtl2SidedTest, DescriptorTextFramesTheSides) {
    FakeTexture texture;
    front.text = "front\n";
    back.text = "back\n";
    startFrame(mtl, {{"translucency_tex", &texture}});
    const std::string head = "1 dbgmtlname \"leaf\"\ntwo_sided\n<coatlayer_begin>\nweight_map\n",
                      frontEnd = "front\n<coatlayer_end>\n",
                      backFrame =
                          "<coatlayer_begin>\nweight_map\ncolor 1.0 1.0 1.0\nback\n"
                          "<coatlayer_end>\n";
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              head + "texture color \n" + frontEnd + backFrame);
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "1 Num_children: 2\nfront\nback\n");
    EXPECT_EQ(describe(mtl, "x"), "0 ");

    texture.describesItself = false;
    back.hiddenFaces = {EXT_RTMTL};
    front.textSection = "MaterialDescriptor";
    startFrame(mtl);
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              head + "color 0.500000 0.500000 0.500000\n" + frontEnd);
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "1 Num_children: 1\nNum_children: 0\n");
}

}  // namespace
