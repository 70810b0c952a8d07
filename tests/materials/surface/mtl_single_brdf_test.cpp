#include <cmath>

#include "fake_host/fake_host.h"

namespace {

class MtlSingleBRDFTest : public OneHit {
protected:
    MtlSingleBRDFTest() {
        plugin.sampler.color = Color(0.5f, 0.25f, 1.0f);
        setParams(mtl, {{"brdf", &plugin}});
    }

    RecordingMaterial plugin;
    PelkMaterial& mtl = make("MtlSingleBRDF", "paint");
};

TEST_F(MtlSingleBRDFTest, ShadesThroughThePluginAndItsFilter) {
    startFrame(mtl, {{"filter", Color(1, 1, 0.5f)}});
    context.directLight = Color(0.25f);
    context.rayWeight = Color(0.5f);
    context.rayWeight2 = Color(0.25f);
    plugin.sampler.volume = &glass;
    context.onLight = [&](BSDFSampler*) { EXPECT_EQ(context.surfaceVolume, &glass); };
    const PelkContext before = context;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context),
              (Results{Color(0.75f, 0.5f, 0.625f), Color(0), Color(1), Color(0)}));
    EXPECT_EQ(context.surfaceVolume, nullptr) << "no ray goes in";
    EXPECT_EQ(plugin.seen.rayWeight, Color(0.5f, 0.5f, 0.25f));
    EXPECT_EQ(plugin.seen.rayWeight2, Color(0.25f, 0.25f, 0.125f));
    expectRayAndHitAsBefore(before, context);
    EXPECT_EQ(log.calls,
              (std::vector<std::string>{"getBSDF", "shadeWithBSDF", "computeDirectLighting",
                                        "traceForward", "releaseBSDF"}));
    context.onLight = [](BSDFSampler*) { throwIf(true); };
    EXPECT_THROW(mtl.shade(context), ExceptionMsg);
    EXPECT_EQ(context.surfaceVolume, nullptr) << "the volume goes where shading throws";
}

TEST_F(MtlSingleBRDFTest, ShadowRaysSeeTheTransparencyAlone) {
    const Color clear(0.25f, 1.0f, 2.0f);
    plugin.sampler.transparency = clear;
    plugin.sampler.volume = &glass;
    startFrame(mtl, {{"filter", Color(0.5f)}});
    context.rayType = kRayShadow;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), (Results{Color(0), clear, Color(0.75f, 0, 0), clear}))
        << "not filtered";
    EXPECT_FALSE(log.has("shadeWithBSDF"));
    EXPECT_EQ(context.surfaceVolume, &glass) << "a ray goes in";
    EXPECT_EQ(plugin.seen.rayWeight, Color(0.5f)) << "the filter reaches the weights all the same";
}

TEST_F(MtlSingleBRDFTest, BacksAreSeeThroughByRayType) {
    plugin.sampler.transparency = Color(0.25f);
    const auto isSeeThrough = [&](int doubleSided, int backSide, u32 rayType, int depth) {
        startFrame(mtl, {{"double_sided", doubleSided}});
        context.backSide = backSide;
        context.rayType = rayType;
        context.traceDepth = depth;
        mtl.shade(context);
        const bool isClear = resultsOf(context) == kFullyTransparent;
        EXPECT_EQ(log.has("getBSDF"), !isClear);
        // The sampler agrees with shade, whoever samples it.
        BSDFSampler* sampler = mtl.getBSDF(context, 0x10);
        EXPECT_EQ(plugin.seenFlags, doubleSided == 0 ? 0x11 : 0x10);
        EXPECT_EQ(sampler == &plugin.sampler, doubleSided < 2) << "its own until backs matter";
        EXPECT_EQ(sampler->getBRDF(kFrontSide)->getTransparency(context),
                  Color(isClear ? 1 : 0.25f));
        mtl.releaseBSDF(context, sampler);
        return isClear;
    };
    const u32 cam = kRayCamera, reflected = cam | kRayReflect, refracted = cam | kRayRefract;
    for (const int doubleSided : {0, 1, 2, 3, 4, 5}) {
        EXPECT_EQ(isSeeThrough(doubleSided, 1, cam, 0), doubleSided >= 2 && doubleSided <= 4);
        EXPECT_FALSE(isSeeThrough(doubleSided, 0, cam, 0)) << "the front";
        EXPECT_FALSE(isSeeThrough(doubleSided, 1, kRayShadow, 1));
    }
    EXPECT_FALSE(isSeeThrough(2, 1, cam, 1)) << "no camera ray itself";
    EXPECT_TRUE(isSeeThrough(3, 1, reflected, 1));
    EXPECT_TRUE(isSeeThrough(3, 1, refracted, 1));
    EXPECT_FALSE(isSeeThrough(4, 1, refracted, 1));
    EXPECT_TRUE(isSeeThrough(4, 1, refracted | kRayGi, 1));
}

TEST_F(MtlSingleBRDFTest, BackFaceSamplerHoldsNothingOfTheLastHit) {
    plugin.sampler.hasFace[kBackSide] = false;
    startFrame(mtl, {{"double_sided", 2}});
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    EXPECT_EQ(sampler->getBRDF(kBackSide), nullptr);
    EXPECT_NE(sampler->getBRDF(kFrontSide), nullptr);
    mtl.releaseBSDF(context, sampler);
    plugin.givesSampler = false;
    plugin.takesNull = true;
    EXPECT_EQ(mtl.getBSDF(context, 0), sampler) << "the element was not given back";
    EXPECT_EQ(sampler->getBRDF(kFrontSide), nullptr);
    mtl.releaseBSDF(context, sampler);
    EXPECT_EQ(log.count("releaseBSDF"), 2) << "a null goes back too";
}

TEST_F(MtlSingleBRDFTest, ImpossibleColoursAreRepairedAndReportedOncePerFrame) {
    const auto repaired = [&](Color color, bool allowNegative) {
        plugin.sampler.color = color;
        startFrame(mtl, {{"allow_negative_colors", allowNegative}});
        mtl.shade(context);
        mtl.shade(context);
        return context.resultColor;
    };
    EXPECT_EQ(repaired({1e30f, 2, 3}, false), Color(1e30f, 2, 3)) << "bright is fine";
    EXPECT_EQ(repaired({-1, 0.5f, -2}, true), Color(-1, 0.5f, -2));
    EXPECT_TRUE(renderer.log.texts.empty());
    const float inf = HUGE_VALF;
    EXPECT_EQ(repaired({inf, -1, 1}, true), Color(0, -1, 1));
    EXPECT_EQ(renderer.log.texts,
              std::vector<std::string>{"w Material \"paint\" produced overbright or invalid color "
                                       "(rgb=inf -1.000000 1.000000).\n"});
    EXPECT_EQ(repaired({-1, 0.5f, std::nanf("")}, false), Color(0, 0.5f, 0));
    EXPECT_EQ(renderer.log.texts.size(), 2u) << "one for the new frame";
}

}  // namespace
