#include "fake_host/fake_host.h"

namespace {

constexpr u32 kCam = kRayCamera, kReflect = kRayReflect, kRefract = kRayRefract, kGi = kRayGi;

class MtlRenderStatsTest : public OneHit {
protected:
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
        {kCam | kRefract, 1, kRefractions},
        {kCam | kReflect, 1, kReflections},
        {kCam | kReflect | kRefract, 1, kReflections | kRefractions},
        {kCam | kReflect | kRefract | kGi, 1, kIndirect},
        {kRayShadow, 0, kNone},
        {kRayShadow, 1, kShadows},
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
            context.rayType = c.rayType;
            context.traceDepth = c.depth;
            const bool isHidden = off & c.hiddenBy;
            mtl.shade(context);
            EXPECT_EQ(resultsOf(context), isHidden ? kFullyTransparent : kOpaqueBlack);
            BSDFSampler* sampler = mtl.getBSDF(context, 0);
            EXPECT_EQ(base.samplersOut, isHidden ? 0 : 1);
            EXPECT_EQ(sampler->getBSDFTransparency(context), Color(isHidden ? 1.0f : 0.0f));
            mtl.releaseBSDF(context, sampler);
        }
    }
}

TEST_F(MtlRenderStatsTest, MixesTheBaseWithClearByItsVisibility) {
    const Results clearBase = {Color(1), Color(0.5f), Color(0.5f), Color(0.25f)};
    const Results half = {Color(0.5f), Color(0.75f), Color(0.25f), Color(0.625f)};
    const float low = 1.0f - 1e-6f;
    const struct {
        float visibility;
        Results base, results;
    } cases[] = {
        {0.5f, clearBase, half},
        {1e-6f, kNothing, {Color(0), Color(low), Color(0), Color(low)}},
        {0.999999f, clearBase, clearBase},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.visibility);
        startFrame(mtl,
                   {{"base_mtl", &base}, {"visibility", c.visibility}, {"shadows_receive", false}});
        base.results = c.base;
        fragment.multiplied.clear();
        context.resultFragment = &fragment;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), c.results);
        EXPECT_EQ(base.seen.rayWeight, Color(c.visibility));
        EXPECT_EQ(base.seen.shadeFlags, 0x40001u);
        expectRayAndHitAsBefore(before, context);
        const bool isFull = c.results == c.base;
        EXPECT_EQ(fragment.multiplied,
                  std::vector(isFull ? 0 : 1, std::pair(Color(c.visibility), 1)));
    }
}

}  // namespace
