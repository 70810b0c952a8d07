#include <limits>

#include "fake_host/fake_host.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

class MtlSingleBRDFTest : public FakeHost {
protected:
    MtlSingleBRDFTest() { plugin.sampler.color = Color(0.5f, 0.25f, 1.0f); }

    RecordingMaterial plugin;
    PelkMaterial& mtl = make("MtlSingleBRDF", "paint");
};

TEST_F(MtlSingleBRDFTest, ShadesThroughThePluginAndItsFilter) {
    startFrame(mtl, {{"brdf", &plugin}, {"filter", Color(1, 1, 0.5f)}});
    FakeContext context = hit();
    context.directLight = Color(0.25f);
    context.rayWeight = Color(0.5f);
    context.rayWeight2 = Color(0.25f);
    const PelkContext before = context;
    mtl.shade(context);
    EXPECT_EQ(context.resultColor, Color(0.75f, 0.5f, 0.625f));
    EXPECT_EQ(plugin.seenWeight, Color(0.5f, 0.5f, 0.25f));
    EXPECT_EQ(plugin.seenWeight2, Color(0.25f, 0.25f, 0.125f));
    EXPECT_EQ(plugin.samplersOut, 0);
    expectRayAndHitAsBefore(before, context);
    EXPECT_EQ(log.calls,
              (std::vector<std::string>{"getBSDF", "shadeWithBSDF", "computeDirectLighting",
                                        "traceForward", "releaseBSDF"}));
}

TEST_F(MtlSingleBRDFTest, MissingPiecesHaveFixedAnswers) {
    RecordingMaterial noBSDF;
    noBSDF.hiddenFaces = {EXT_BSDF};
    startFrame(mtl, {{"brdf", &noBSDF}, {"double_sided", 2}});
    EXPECT_EQ(renderer.log.warnings.at(0),
              "[MtlSingleBRDF] No BSDF parameter specified to material \"paint\"\n");
    FakeContext context = hit();
    context.backSide = 1;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kOpaqueBlack) << "before the back is looked at";
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    mtl.releaseBSDF(context, nullptr);

    startFrame(mtl, {{"brdf", &plugin}, {"filter", Color(0.5f)}, {"double_sided", 1}});
    plugin.givesSampler = false;
    const PelkContext before = context;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
    EXPECT_EQ(log.count("releaseBSDF"), 0);
    expectRayAndHitAsBefore(before, context);

    renderer.sequenceData.log = nullptr;
    startFrame(mtl, {{"brdf", &noBSDF}});
}

TEST_F(MtlSingleBRDFTest, BacksAreSeeThroughByRayType) {
    plugin.sampler.transparency = Color(0.25f);
    const auto isSeeThrough = [&](int doubleSided, int backSide, u32 rayType, int depth) {
        startFrame(mtl, {{"brdf", &plugin}, {"double_sided", doubleSided}});
        FakeContext context = hit();
        context.backSide = backSide;
        context.rayType = rayType;
        context.traceDepth = depth;
        mtl.shade(context);
        const bool isClear = resultsOf(context) == kFullyTransparent;
        EXPECT_EQ(log.has("getBSDF"), !isClear);
        EXPECT_EQ(plugin.seenFlags & 1, doubleSided == 0 ? 1 : 0);
        // The sampler agrees with shade, whoever samples it.
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
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

TEST_F(MtlSingleBRDFTest, ShadowRaysSeeTheTransparencyAlone) {
    plugin.sampler.transparency = Color(0.25f, 1.0f, 2.0f);
    plugin.sampler.color = Color(kNan);
    startFrame(mtl, {{"brdf", &plugin}, {"filter", Color(0.5f)}, {"double_sided", 3}});
    FakeContext context = hit();
    context.rayType = kRayShadow;
    context.backSide = 1;
    mtl.shade(context);
    const Color clear = plugin.sampler.transparency;
    EXPECT_EQ(resultsOf(context), (Results{Color(0), clear, Color(0.75f, 0, 0), clear}))
        << "neither filtered nor checked";
    EXPECT_EQ(log.count("shadeWithBSDF"), 0);
    EXPECT_EQ(plugin.seenWeight, Color(0.5f)) << "the filter reaches the weights all the same";
    EXPECT_TRUE(renderer.log.warnings.empty());
}

TEST_F(MtlSingleBRDFTest, ImpossibleColoursAreRepairedAndReportedOncePerFrame) {
    // Shades one colour twice in a frame.
    const auto repaired = [&](Color color, bool allowNegative, size_t reports) {
        renderer.log.warnings.clear();
        plugin.sampler.color = color;
        startFrame(mtl, {{"brdf", &plugin}, {"allow_negative_colors", allowNegative}});
        FakeContext context = hit();
        mtl.shade(context);
        mtl.shade(context);
        EXPECT_EQ(renderer.log.warnings.size(), reports);
        return context.resultColor;
    };
    EXPECT_EQ(repaired({1e30f, 2, 3}, false, 0), Color(1e30f, 2, 3)) << "bright is fine";
    EXPECT_EQ(repaired({-1, 0.5f, -2}, true, 0), Color(-1, 0.5f, -2));
    EXPECT_EQ(repaired({-1, 0.5f, -2}, false, 1), Color(0, 0.5f, 0));
    EXPECT_EQ(repaired({kInf, -1, 1}, true, 1), Color(0, -1, 1));
    EXPECT_EQ(renderer.log.warnings.at(0),
              "Material \"paint\" produced overbright or invalid color "
              "(rgb=inf -1.000000 1.000000).\n");
    // The sign with which printf shows NaN isn't fixed, so its text isn't looked at.
    plugin.sampler.color = Color(kNan, 1, 1);
    renderer.sequenceData.log = nullptr;
    startFrame(mtl);
    FakeContext context = hit();
    mtl.shade(context);
    EXPECT_EQ(context.resultColor, Color(0, 1, 1));
}

TEST_F(MtlSingleBRDFTest, VolumeStaysOnlyWhereTheSurfaceLetsLightIn) {
    FakeVolume own, former;
    plugin.sampler.volume = &own;
    const auto volumeAfter = [&](u32 rayType, Color transparency, PelkVolume* before) {
        plugin.sampler.transparency = transparency;
        startFrame(mtl, {{"brdf", &plugin}});
        FakeContext context = hit();
        context.rayType = rayType;
        context.surfaceVolume = before;
        mtl.shade(context);
        return context.surfaceVolume;
    };
    for (const u32 rayType : {kRayCamera, kRayShadow}) {
        EXPECT_EQ(volumeAfter(rayType, Color(0, 2.7e-6f, 0), nullptr), nullptr) << "mean 0.9e-6";
        EXPECT_EQ(volumeAfter(rayType, Color(0, 3.3e-6f, 0), nullptr), &own) << "mean 1.1e-6";
        EXPECT_EQ(volumeAfter(rayType, Color(0), &former), &former) << "set before";
    }
}

TEST_F(MtlSingleBRDFTest, SamplerIsThePluginsOwnUntilBacksMatter) {
    const auto flagsSeen = [&](int doubleSided, int flags) {
        startFrame(mtl, {{"brdf", &plugin}, {"double_sided", doubleSided}});
        FakeContext context = hit();
        BSDFSampler* sampler = mtl.getBSDF(context, flags);
        EXPECT_EQ(sampler == &plugin.sampler, doubleSided < 2);
        mtl.releaseBSDF(context, sampler);
        EXPECT_EQ(plugin.samplersOut, 0);
        return plugin.seenFlags;
    };
    EXPECT_EQ(flagsSeen(0, 0x10), 0x11);
    EXPECT_EQ(flagsSeen(1, 0x10), 0x10);
    EXPECT_EQ(flagsSeen(1, 0x11), 0x11);
    EXPECT_EQ(flagsSeen(2, 0x10), 0x10);
}

TEST_F(MtlSingleBRDFTest, BackFaceSamplerForwardsToTheSideThatWasAsked) {
    plugin.sampler.diffuse = Color(0.25f);
    plugin.sampler.lightMult = Color(0.5f);
    plugin.sampler.evaluated = Color(2);
    plugin.sampler.diffuseNormal = {1, 0, 0};
    plugin.sampler.hasFace[kBackSide] = false;
    startFrame(mtl, {{"brdf", &plugin}, {"double_sided", 2}});
    FakeContext context = hit();
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    EXPECT_EQ(sampler->getBRDF(kBackSide), nullptr);
    BRDFSampler* front = sampler->getBRDF(kFrontSide);
    ASSERT_NE(front, nullptr);
    EXPECT_NE(front, &plugin.sampler);
    Color light(4), unshadowed(4);
    EXPECT_EQ(front->getDiffuseColor(light), Color(1));
    EXPECT_EQ(front->getLightMult(light), Color(2));
    EXPECT_EQ(front->getDiffuseNormal(context), Vector(1, 0, 0));
    EXPECT_EQ(front->eval(context, {0, 0, 1}, light, unshadowed, 1, 1), Color(2));
    mtl.releaseBSDF(context, sampler);

    plugin.givesSampler = false;
    BSDFSampler* empty = mtl.getBSDF(context, 0);
    ASSERT_EQ(empty, sampler) << "the element was not given back";
    EXPECT_EQ(empty->getBRDF(kFrontSide), nullptr) << "the last hit shows through";
    EXPECT_EQ(empty->getBSDFTransparency(context), Color(1));
    mtl.releaseBSDF(context, empty);
    EXPECT_EQ(log.count("releaseBSDF"), 1) << "nothing to give back the second time";

    endRender(mtl);
    log.clear();
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    EXPECT_EQ(log.count("getBSDF"), 0) << "a sampler without an element would be lost";
}

TEST_F(MtlSingleBRDFTest, OpaqueFlagsAreAskedForOncePerFrameOnBothFaces) {
    plugin.opaqueFlags = 3;
    startFrame(mtl, {{"brdf", &plugin}});
    auto* opaque = findInterface<OpaqueShadeableInterface>(&mtl, EXT_OPAQUE_SHADEABLE);
    auto* material = findInterface<MaterialInterface>(&mtl, EXT_MATERIAL);
    EXPECT_EQ(opaque->getOpaqueFlags(), 3);
    plugin.opaqueFlags = 1;
    EXPECT_EQ(material->getOpaqueFlags(), 3);
    EXPECT_EQ(log.count("getOpaqueFlags"), 1);
    startFrame(mtl);
    EXPECT_EQ(material->getOpaqueFlags(), 1);
    plugin.hiddenFaces = {EXT_OPAQUE_SHADEABLE};
    startFrame(mtl);
    EXPECT_EQ(opaque->getOpaqueFlags(), 0);
}

TEST_F(MtlSingleBRDFTest, DescriptorTextStandsAheadOfThePlugins) {
    RecordingMaterial mute;
    mute.hiddenFaces = {EXT_RTMTL};
    plugin.text = "lines\n";
    // The text of a section, with a plug-in that handles one section, or all under "".
    const auto text = [&](PluginBase& brdf, const char* handled, const char* section) {
        plugin.textSection = handled;
        startFrame(mtl, {{"brdf", &brdf}, {"double_sided", 4}});
        return describe(mtl, section);
    };
    EXPECT_EQ(text(mute, "", "MaterialDescriptor"),
              "1 double_sided 4\ndiffuse\ncolor 0.5 0.5 0.5\n");
    EXPECT_EQ(text(mute, "", "HierarchyDescriptor"), "0 ");
    EXPECT_EQ(text(plugin, "", "MaterialDescriptor"), "1 double_sided 4\nlines\n");
    EXPECT_EQ(text(plugin, "x", "HierarchyDescriptor"), "0 double_sided 4\n");
    EXPECT_EQ(text(plugin, "x", "x"), "1 double_sided 4\nlines\n") << "unknown section";
    EXPECT_EQ(plugin.seenOwner, &owner);
    EXPECT_EQ(plugin.seenName, "name");
}

}  // namespace
