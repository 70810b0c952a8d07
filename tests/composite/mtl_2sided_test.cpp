#include "fake_host/fake_host.h"

namespace {

class Mtl2SidedTest : public FakeHost {
protected:
    static constexpr PluginBase* kNone = nullptr;

    /// What of light on the far side shows, through a front and a back that give 1.
    Color lightFromBeyond(FakeContext& context) {
        front.sampler.evaluated = back.sampler.evaluated = Color(1);
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
        startFrame(mtl, {{"front", &front}, {"back", &back}, {"force_1sided", true}});
        FakeContext context = hit();
        context.backSide = c.backSide;
        context.flippedSide = c.flippedSide;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(front.seenSide, c.front);
        EXPECT_EQ(back.seenSide, c.back);
        EXPECT_EQ(context.resultColor, Color(c.backSide ? 0.5f : 0.25f));
        EXPECT_EQ((c.backSide ? back : front).sampler.seenSide, c.backSide ? c.back : c.front);
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
    const struct {
        const char* what;
        PluginBase* texture;
        float multiplier;
        bool multiply;
        Color seen;
    } cases[] = {
        {"plain", kNone, 1, false, Color(0.5f)},
        {"texture", &texture, 0.5f, false, Color(0.75f, 0.5f, 0.25f)},
        {"times the front's diffuse colour", kNone, 1, true, Color(0.25f, 0.5f, 0)},
        {"multiplier just below the bound", &texture, 0.99e-12f, false, Color(0.5f)},
    };
    front.sampler.diffuse = Color(0.5f, 1, 0);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"front", &front},
                         {"back", &back},
                         {"translucency", Color(0.5f)},
                         {"translucency_tex", c.texture},
                         {"translucency_tex_mult", c.multiplier},
                         {"mult_by_front_diffuse", c.multiply}});
        FakeContext context = hit();
        EXPECT_EQ(lightFromBeyond(context), c.seen);
        EXPECT_EQ(context.rayWeight, Color(1));
        EXPECT_EQ(log.has("getTexColor"), c.texture && c.multiplier > 0.1f);
    }
    EXPECT_EQ(texture.seenWeight, Color(0.5f));
}

TEST_F(Mtl2SidedTest, MissingPiecesHaveFixedAnswers) {
    FakeContext context = hit();
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent) << "before a frame";
    mtl.releaseBSDF(context, nullptr);

    startFrame(mtl, {{"front", &front}, {"translucency", Color(0.5f)}});
    EXPECT_EQ(lightFromBeyond(context), Color(0.5f)) << "the front stands in for the back";
    EXPECT_EQ(log.count("getBSDF"), 2);

    front.givesSampler = false;
    front.takesNull = true;
    startFrame(mtl, {{"back", &back}});
    EXPECT_EQ(lightFromBeyond(context), Color(0.5f));
    startFrame(mtl, {{"front", kNone}, {"back", kNone}});
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
    EXPECT_TRUE(renderer.log.warnings.empty());
}

TEST_F(Mtl2SidedTest, OpaqueOnlyIfBothSidesAre) {
    RecordingMaterial mute;
    mute.hiddenFaces = {EXT_OPAQUE_SHADEABLE};
    front.opaqueFlags = 3;
    for (const int backFlags : {0, 1, 2, 3}) {
        back.opaqueFlags = backFlags;
        startFrame(mtl, {{"front", &front}, {"back", &back}});
        EXPECT_EQ(mtl.getOpaqueFlags(), backFlags & 1 ? 3 : 2);
        startFrame(mtl, {{"front", &mute}});
        EXPECT_EQ(mtl.getOpaqueFlags(), 2);
    }
}

TEST_F(Mtl2SidedTest, DescriptorTextFramesTheSides) {
    FakeTexture texture, mute;
    mute.describesItself = false;
    RecordingMaterial noText;
    noText.hiddenFaces = {EXT_RTMTL};
    front.text = "front\n";
    back.text = "back\n";
    const std::string head = "1 dbgmtlname \"leaf\"\ntwo_sided\n",
                      plain = "weight_map\ncolor 0.500000 0.250000 0.000000\n",
                      begin = "<coatlayer_begin>\n", end = "<coatlayer_end>\n",
                      white = begin + "weight_map\ncolor 1.0 1.0 1.0\n";
    const struct {
        const char* what;
        PluginBase *front, *back, *texture;
        std::string material, hierarchy;
    } cases[] = {
        {"both", &front, &back, &texture,
         begin + "weight_map\ntexture color \nfront\n" + end + white + "back\n" + end,
         "1 Num_children: 2\nfront\nback\n"},
        {"texture without text", &front, &noText, &mute, begin + plain + "front\n" + end,
         "1 Num_children: 1\nfront\n"},
        {"front twice", &front, kNone, kNone,
         begin + plain + "front\n" + end + white + "front\n" + end,
         "1 Num_children: 2\nfront\nfront\n"},
        {"back alone", kNone, &back, kNone, white + "back\n" + end, "1 Num_children: 1\nback\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"front", c.front},
                         {"back", c.back},
                         {"translucency", Color(0.5f, 0.25f, 0)},
                         {"translucency_tex", c.texture}});
        EXPECT_EQ(describe(mtl, "MaterialDescriptor"), head + c.material);
        EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), c.hierarchy);
    }
    EXPECT_EQ(describe(mtl, "x"), "0 ");
    back.textSection = "MaterialDescriptor";
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "1 Num_children: 1\nNum_children: 0\n");
}

}  // namespace
