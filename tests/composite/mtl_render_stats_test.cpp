#include "fake_host/fake_host.h"

namespace {

constexpr u32 kCam = kRayCamera, kReflect = kRayReflect, kRefract = kRayRefract, kGi = kRayGi;

class MtlRenderStatsTest : public FakeHost {
protected:
    RecordingMaterial base;
    PelkMaterial& mtl = make("MtlRenderStats");
};

TEST_F(MtlRenderStatsTest, EachKindOfRayIsHiddenByItsOwnFlag) {
    enum { kNone, kCamera = 1, kReflections = 2, kRefractions = 4, kIndirect = 8, kShadows = 16 };
    const struct {
        u32 rayType;
        int depth;
        int hiddenBy;  // any of these, when off
    } cases[] = {
        {kCam, 0, kCamera},
        {kCam, 1, kNone},
        {kCam | kReflect, 1, kReflections},
        {kCam | kRefract, 1, kRefractions},
        {kCam | kReflect | kRefract, 1, kReflections | kRefractions},
        {kCam | kGi, 1, kIndirect},
        {kReflect | kRefract, 0, kNone},
        {kRayShadow, 0, kNone},
        {kRayShadow, 1, kShadows},
        {kRayShadow | kCam, 0, kCamera},
        {kRayShadow | kCam | kReflect | kRefract | kGi, 1, kShadows},
    };
    base.results = kOpaqueBlack;
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
            mtl.shade(context);
            EXPECT_EQ(resultsOf(context), isHidden ? kFullyTransparent : kOpaqueBlack);
            BSDFSampler* sampler = mtl.getBSDF(context, 0);
            EXPECT_EQ(base.samplersOut, isHidden ? 0 : 1);
            EXPECT_EQ(sampler->getBSDFTransparency(context), Color(isHidden ? 1.0f : 0.0f));
            Color light(4);
            sampler->getBRDF(kBackSide)->getLightMult(light);
            EXPECT_EQ(light, Color(4)) << "taken from layers below";
            mtl.releaseBSDF(context, sampler);
        }
    }
}

TEST_F(MtlRenderStatsTest, MixesTheBaseWithClearByItsVisibility) {
    const Results clearBase = {Color(1), Color(0.5f), Color(0.5f), Color(0.25f)};
    const Results film = {Color(0), Color(0.5f), Color(0.5f), Color(0.5f)};
    const float low = 1.0f - 1e-6f;
    const struct {
        const char* what;
        float visibility;
        bool hasBase;
        Results base, results;
    } cases[] = {
        {"half of nothing below", 0.5f, false, {}, film},
        {"half of opaque", 0.5f, true, kOpaqueBlack, film},
        {"half of half clear",
         0.5f,
         true,
         clearBase,
         {Color(0.5f), Color(0.75f), Color(0.25f), Color(0.625f)}},
        {"lower bound", 1e-6f, true, kNothing, {Color(0), Color(low), Color(0), Color(low)}},
        {"upper bound", 0.999999f, true, clearBase, clearBase},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        PluginBase* below = c.hasBase ? &base : nullptr;
        startFrame(mtl,
                   {{"base_mtl", below}, {"visibility", c.visibility}, {"shadows_receive", false}});
        base.results = c.base;
        RecordingFragment fragment;
        FakeContext context = hit();
        context.resultFragment = &fragment;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), c.results);
        if (c.results == c.base)
            EXPECT_TRUE(fragment.multiplied.empty());
        else
            EXPECT_EQ(fragment.multiplied, std::vector{std::pair(Color(c.visibility), 1)});
        if (c.hasBase) {
            EXPECT_EQ(base.seenWeight, Color(c.visibility));
            EXPECT_EQ(base.seenShadeFlags, 0x40001u);
        }
        expectRayAndHitAsBefore(before, context);
        BSDFSampler* sampler = mtl.getBSDF(context, 0x11);
        EXPECT_EQ(sampler, c.hasBase ? &base.sampler : nullptr) << "never faded";
        if (sampler)
            mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlRenderStatsTest, DescriptorTextStandsAheadOfTheBases) {
    base.text = "lines\n";
    base.opaqueFlags = 3;
    startFrame(mtl,
               {{"base_mtl", &base}, {"reflections_visibility", false}, {"visibility", 0.25f}});
    const std::string own =
        "visible_to_camera 1\nvisible_to_reflections 0\nvisible_to_refractions 1\n"
        "visible_to_gi 1\nvisible_to_shadows 1\noverall_visibility 0.250000\n";
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "1 " + own + "lines\n");
    EXPECT_EQ(describe(mtl, "x"), "1 lines\n");
    EXPECT_EQ(mtl.getOpaqueFlags(), 1);
    startFrame(mtl, {{"base_mtl", static_cast<PluginBase*>(nullptr)}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "0 " + own);
    EXPECT_EQ(mtl.getOpaqueFlags(), 0);
}

}  // namespace
