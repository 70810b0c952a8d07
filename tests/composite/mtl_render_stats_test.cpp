#include "fake_host/fake_host.h"

namespace {

constexpr u32 kCam = kRayCamera, kReflect = kRayReflect, kRefract = kRayRefract, kGi = kRayGi;

class MtlRenderStatsTest : public FakeHost {
protected:
    MtlRenderStatsTest() { base.results = {Color(1, 2, 3), Color(0), Color(1), Color(0)}; }

    RecordingMaterial base;
    PelkMaterial& mtl = make("MtlRenderStats");
};

TEST_F(MtlRenderStatsTest, EachKindOfRayIsHiddenByItsOwnFlag) {
    enum Flags {
        kNone = 0,
        kCamera = 1,
        kReflections = 2,
        kRefractions = 4,
        kIndirect = 8,
        kShadows = 16
    };
    const struct {
        u32 rayType;
        int depth;
        int hiddenBy;  // any of these, when off
    } cases[] = {
        {kCam, 0, kCamera},
        {kCam, 1, kNone},
        {kCam | kReflect, 0, kCamera | kReflections},
        {kCam | kReflect, 1, kReflections},
        {kCam | kRefract, 1, kRefractions},
        {kCam | kReflect | kRefract, 1, kReflections | kRefractions},
        {kCam | kGi, 1, kIndirect},
        {kCam | kReflect | kGi, 1, kIndirect},
        {kCam | kRefract | kGi, 1, kIndirect},
        {kReflect | kRefract, 0, kNone},
        {kGi, 0, kNone},
        {kRayShadow, 0, kNone},
        {kRayShadow, 1, kShadows},
        {kRayShadow | kCam, 0, kCamera},
        {kRayShadow | kCam | kReflect | kRefract | kGi, 1, kShadows},
    };
    for (int off = 0; off < 32; ++off) {
        startFrame(mtl, {{"base_mtl", &base},
                         {"camera_visibility", !(off & kCamera)},
                         {"reflections_visibility", !(off & kReflections)},
                         {"refractions_visibility", !(off & kRefractions)},
                         {"gi_visibility", !(off & kIndirect)},
                         {"shadows_visibility", !(off & kShadows)}});
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << std::hex << "off " << off << ", rayType "
                                            << c.rayType << ", depth " << c.depth);
            FakeContext context = hit();
            context.rayType = c.rayType;
            context.traceDepth = c.depth;
            const bool isHidden = off & c.hiddenBy;
            log.clear();
            mtl.shade(context);
            EXPECT_EQ(resultsOf(context), isHidden ? kFullyTransparent : base.results);
            EXPECT_EQ(log.has("shade"), !isHidden);
            BSDFSampler* sampler = mtl.getBSDF(context, 0);
            EXPECT_EQ(sampler != &base.sampler, isHidden);
            mtl.releaseBSDF(context, sampler);
        }
    }
}

TEST_F(MtlRenderStatsTest, MixesTheBaseWithClearByItsVisibility) {
    const Results clearBase = {Color(1), Color(0.5f), Color(0.5f), Color(0.25f)};
    const struct {
        const char* what;
        float visibility;
        Results base, results;
        bool isFaded;
    } cases[] = {
        {"half of opaque",
         0.5f,
         kOpaqueBlack,
         {Color(0), Color(0.5f), Color(0.5f), Color(0.5f)},
         true},
        {"half of half clear",
         0.5f,
         clearBase,
         {Color(0.5f), Color(0.75f), Color(0.25f), Color(0.625f)},
         true},
        {"at the lower bound",
         1e-6f,
         kNothing,
         {Color(0), Color(1.0f - 1e-6f), Color(0), Color(1.0f - 1e-6f)},
         true},
        {"at the upper bound", 0.999999f, clearBase, clearBase, false},
        {"twice", 2.0f, clearBase, clearBase, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"base_mtl", &base}, {"visibility", c.visibility}});
        base.results = c.base;
        RecordingFragment fragment;
        FakeContext context = hit();
        context.resultFragment = &fragment;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), c.results);
        EXPECT_EQ(base.seenWeight, Color(c.visibility));
        EXPECT_EQ(fragment.multiplied.size(), c.isFaded ? 1u : 0u);
        if (c.isFaded) {
            EXPECT_EQ(fragment.multiplied[0], std::pair(Color(c.visibility), 1));
        }
        expectRayAndHitAsBefore(before, context);
        EXPECT_EQ(mtl.getBSDF(context, 0x11), &base.sampler) << "never faded";
        EXPECT_EQ(base.seenFlags, 0x11);
        mtl.releaseBSDF(context, &base.sampler);
    }
}

TEST_F(MtlRenderStatsTest, ShadowsAreLeftOutForTheBaseAlone) {
    for (const bool receive : {true, false}) {
        startFrame(mtl, {{"base_mtl", &base}, {"shadows_receive", receive}});
        FakeContext context = hit();
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(base.seenShadeFlags, receive ? 0x1u : 0x40001u);
        expectRayAndHitAsBefore(before, context);
    }
}

TEST_F(MtlRenderStatsTest, WithoutABaseItIsABlackFilm) {
    RecordingMaterial bare;
    bare.hiddenFaces = {EXT_MATERIAL, EXT_BSDF, EXT_OPAQUE_SHADEABLE, EXT_RTMTL};
    for (PluginBase* empty : {static_cast<PluginBase*>(nullptr), static_cast<PluginBase*>(&bare)}) {
        startFrame(mtl, {{"base_mtl", empty}, {"visibility", 0.5f}});
        FakeContext context = hit();
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), (Results{Color(0), Color(0.5f), Color(0.5f), Color(0.5f)}));
        EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
        mtl.releaseBSDF(context, nullptr);
        EXPECT_EQ(mtl.getMaterialID(context), 0);
        EXPECT_EQ(mtl.getOpaqueFlags(), 0);
    }
}

TEST_F(MtlRenderStatsTest, TheClearSamplerLetsAllLightPass) {
    startFrame(mtl, {{"base_mtl", &base}, {"visibility", 0.0f}});
    FakeContext context = hit();
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    BRDFSampler* front = sampler->getBRDF(kFrontSide);
    ASSERT_TRUE(front && front == sampler->getBRDF(kBackSide));
    Color light(4), unshadowed(5);
    EXPECT_EQ(front->eval(context, {0, 0, 1}, light, unshadowed, 1.0f, kEvalDiffuse), Color(0));
    EXPECT_EQ(front->getDiffuseColor(light), Color(0));
    EXPECT_EQ(front->getLightMult(light), Color(0));
    EXPECT_EQ(light, Color(4));
    EXPECT_EQ(unshadowed, Color(5));
    EXPECT_EQ(front->getTransparency(context), Color(1));
    EXPECT_EQ(sampler->getBSDFTransparency(context), Color(1));
    front->traceForward(context, 1);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
    mtl.releaseBSDF(context, sampler);
    EXPECT_FALSE(log.has("releaseBSDF")) << "the base got what it did not give";
}

TEST_F(MtlRenderStatsTest, QuestionsGoToTheBase) {
    RecordingMaterial multi;
    base.materialID = 7;
    base.multiMtl = findInterface<RTMtlInterface>(&multi, EXT_RTMTL);
    base.opaqueFlags = 3;
    startFrame(mtl, {{"base_mtl", &base}});
    FakeContext context = hit();
    EXPECT_EQ(mtl.getMaterialID(context), 7);
    EXPECT_EQ(findInterface<RTMtlInterface>(&mtl, EXT_RTMTL)->getMultiMtl(), base.multiMtl);
    EXPECT_EQ(mtl.getOpaqueFlags(), 1);
    startFrame(mtl, {{"shadows_visibility", false}});
    EXPECT_EQ(mtl.getOpaqueFlags(), 0);
}

TEST_F(MtlRenderStatsTest, DescriptorTextStandsAheadOfTheBases) {
    base.text = "lines\n";
    startFrame(mtl, {{"base_mtl", &base},
                     {"reflections_visibility", false},
                     {"gi_visibility", false},
                     {"visibility", 0.25f}});
    const std::string own =
        "visible_to_camera 1\nvisible_to_reflections 0\nvisible_to_refractions 1\n"
        "visible_to_gi 0\nvisible_to_shadows 1\noverall_visibility 0.250000\n";
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "1 " + own + "lines\n");
    EXPECT_EQ(describe(mtl, "x"), "1 lines\n");
    startFrame(mtl, {{"base_mtl", static_cast<PluginBase*>(nullptr)}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "0 " + own);
}

}  // namespace
