#include "fake_host/fake_host.h"

namespace {

/// A sampler that notes the operations that others of its kind answer in silence.
class NotingSampler : public RecordingSampler {
public:
    void traceBSDFForward(PelkContext& context, int) override {
        note("traceBSDFForward");
        context.environmentPriority = 99;  // as a host may write there
    }
    Color getBSDFTransparency(PelkContext&) override { return Color(0.5f); }
    void multiplyLight(float) override { note("multiplyLight"); }
    void lightFinished(int) override { note("lightFinished"); }
    int getUseIrradianceMap() override { return 5; }
    int getNumSamples(PelkContext&, int) override { return 6; }
    Color getColor(PelkContext&, Color c) override { return c * 2.0f; }
    Color getAlpha(PelkContext&, Color c) override { return c * 3.0f; }
    PelkContext* getNewContext(PelkContext& context, int&, int) override {
        return context.newSpawnedContext(0, Color(1), 0, {});
    }
    float setupContext(PelkContext&, PelkContext&, float random, int) override { return random; }
    RenderChannelsInfo* getRenderChannels() override {
        note("getRenderChannels");
        return nullptr;
    }
    int getNumSubBRDFs() override { return 7; }
    BRDFSampler* getSubBRDF(int, Color&) override { return this; }
    Color getSelfIllumination(PelkContext&) override { return Color(8); }
};

enum { kBase, kGi, kReflect, kRefract, kShadow, kNumSlots };
constexpr const char* kPluginNames[] = {"base_mtl", "gi_mtl", "reflect_mtl", "refract_mtl",
                                        "shadow_mtl"};
constexpr const char* kEnableNames[] = {"", "enable_gi_mtl", "enable_reflect_mtl",
                                        "enable_refract_mtl", "enable_shadow_mtl"};

class MtlOverrideTest : public FakeHost {
protected:
    MtlOverrideTest() {
        for (int i = 0; i < kNumSlots; ++i)
            subs[i].results.color = Color(static_cast<float>(i));
        setParams(mtl, {{"environment_override", &sky}, {"environment_priority", 5}});
    }

    void fillAll() {
        for (int i = 0; i < kNumSlots; ++i)
            setParams(mtl, {{kPluginNames[i], &subs[i]}});
    }

    RecordingMaterial subs[kNumSlots];
    FakeTexture sky;
    PelkMaterial& mtl = make("MtlOverride");
};

TEST_F(MtlOverrideTest, TheRayPicksItsSlotElseTheBase) {
    const struct {
        u32 rayType;
        int giDepth, disabled, slot;
    } cases[] = {
        {kRayCamera | kRayGi, 0, kBase, kBase},
        {kRayReflect, 0, kBase, kReflect},
        {kRayRefract, 0, kBase, kRefract},
        {kRayReflect | kRayRefract, 0, kBase, kReflect},
        {kRayReflect, 1, kBase, kGi},
        {kRayGiLike | kRayReflect, 0, kBase, kGi},
        {kRayShadow | kRayGiLike, 1, kBase, kShadow},
        {kRayShadow | kRayReflect, 0, kShadow, kReflect},
        {kRayShadow, 0, kShadow, kBase},
        {kRayReflect, 1, kGi, kBase},
        {kRayReflect | kRayRefract, 0, kReflect, kBase},
        {kRayRefract, 0, kRefract, kBase},
    };
    fillAll();
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "rayType " << c.rayType << ", giDepth " << c.giDepth
                                        << ", disabled " << c.disabled);
        for (int i = 1; i < kNumSlots; ++i)
            setParams(mtl, {{kEnableNames[i], i != c.disabled}});
        startFrame(mtl);
        FakeContext context = hit();
        context.rayType = c.rayType;
        context.giDepth = c.giDepth;
        mtl.shade(context);
        EXPECT_EQ(context.resultColor, Color(static_cast<float>(c.slot)));
        BSDFSampler* sampler = mtl.getBSDF(context, 0x11);
        EXPECT_EQ(subs[c.slot].samplersOut, 1);
        EXPECT_EQ(subs[c.slot].seenFlags, 0x11);
        mtl.releaseBSDF(context, sampler);
        EXPECT_EQ(subs[c.slot].samplersOut, 0);
    }
}

TEST_F(MtlOverrideTest, MissingPiecesHaveFixedAnswers) {
    startFrame(mtl);
    FakeContext context = hit();
    context.rayType = kRayReflect;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    mtl.releaseBSDF(context, nullptr);

    subs[kBase].hiddenFaces = subs[kReflect].hiddenFaces = {EXT_BSDF};
    startFrame(mtl, {{"base_mtl", &subs[kBase]}, {"reflect_mtl", &subs[kReflect]}});
    mtl.shade(context);
    EXPECT_EQ(context.resultColor, Color(kBase)) << "only the base shades without a sampler";
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);

    subs[kBase].hiddenFaces.clear();
    subs[kBase].givesSampler = false;
    startFrame(mtl);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    endRender(mtl);
    log.clear();
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    EXPECT_FALSE(log.has("getBSDF")) << "a sampler without an element would be lost";
}

TEST_F(MtlOverrideTest, TheEnvironmentHoldsBelowTheMaterialAlone) {
    FakeTexture outer;
    const struct {
        const char* what;
        bool use;
        TextureInterface* texture;
        EnvironmentRequest request;
    } cases[] = {
        {"override", true, &sky, {&sky, 5, 1}},
        {"not used", false, &sky, {nullptr, INT_MIN, 1}},
        {"no texture", true, nullptr, {nullptr, INT_MIN, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        NotingSampler inner;
        subs[kBase].givenSampler = &inner;
        startFrame(mtl, {{"base_mtl", &subs[kBase]},
                         {"use_environment_override", c.use},
                         {"environment_override", c.texture ? &sky : nullptr}});
        FakeContext context = hit();
        context.environment = &outer;
        context.environmentPriority = 3;
        const PelkContext before = context;
        mtl.shade(context);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(context.environmentRequests, std::vector{c.request}) << "not around getBSDF";
        sampler->traceBSDFForward(context, 1);
        sampler->getBRDF(kFrontSide)->traceForward(context, 1);
        EXPECT_EQ(context.environmentRequests, std::vector(3, c.request));
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlOverrideTest, SamplerForwardsToTheSideThatWasAsked) {
    NotingSampler inner;
    FakeVolume volume;
    inner.hasFace[kBackSide] = false;
    inner.diffuse = inner.transparency = Color(0.25f);
    inner.lightMult = Color(0.5f);
    inner.evaluated = Color(2);
    inner.diffuseNormal = {1, 0, 0};
    inner.volume = &volume;
    subs[kBase].givenSampler = &inner;
    startFrame(mtl, {{"base_mtl", &subs[kBase]}, {"use_environment_override", true}});
    FakeContext context = hit();
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    EXPECT_EQ(sampler->getVolume(context), &volume);
    EXPECT_EQ(sampler->getBSDFTransparency(context), Color(0.5f));
    BRDFSampler* front = sampler->getBRDF(kFrontSide);
    ASSERT_TRUE(front && front != &inner);
    Color light(4), unshadowed(4);
    EXPECT_EQ(front->getDiffuseColor(light), Color(1));
    EXPECT_EQ(front->getLightMult(light), Color(2));
    EXPECT_EQ(front->getDiffuseNormal(context), Vector(1, 0, 0));
    EXPECT_EQ(front->eval(context, {0, 0, 1}, light, unshadowed, 1, 1), Color(2));
    EXPECT_EQ(front->getUseIrradianceMap(), 5);
    EXPECT_EQ(front->getNumSamples(context, 1), 6);
    EXPECT_EQ(front->getTransparency(context), Color(0.25f));
    EXPECT_EQ(front->getColor(context, Color(1)), Color(2));
    EXPECT_EQ(front->getAlpha(context, Color(1)), Color(3));
    EXPECT_EQ(front->getSelfIllumination(context), Color(8));
    front->multiplyLight(0.5f);
    front->lightFinished(0);
    front->getRenderChannels();
    for (const char* call : {"multiplyLight", "lightFinished", "getRenderChannels"})
        EXPECT_EQ(log.count(call), 1) << call;
    int index = 0;
    PelkContext* ray = front->getNewContext(context, index, 1);
    EXPECT_EQ(ray->environment, &sky) << "the spawned ray keeps it";
    EXPECT_EQ(front->setupContext(context, *ray, 0.75f, 0), 0.75f);
    ray->releaseContext();
    context.refusesToSpawn = true;
    EXPECT_EQ(front->getNewContext(context, index, 1), nullptr);
    EXPECT_EQ(front->getNumSubBRDFs(), 7);
    EXPECT_EQ(front->getSubBRDF(0, light), &inner);
    EXPECT_EQ(sampler->getBRDF(kBackSide), nullptr);
    EXPECT_EQ(front->getNumSubBRDFs(), 0) << "no face of that side";
    EXPECT_EQ(front->getSubBRDF(0, light), nullptr);
    mtl.releaseBSDF(context, sampler);
}

TEST_F(MtlOverrideTest, OpaqueFlagsGoByTheShadowMaterialElseByAllOthers) {
    const struct {
        const char* what;
        int flags[kNumSlots];
        bool enableShadow;
        int answer;
    } cases[] = {
        {"shadow material", {0, 2, 0, 0, 1}, true, 3},
        {"shadow material lets through", {1, 1, 1, 1, 2}, true, 0},
        {"all others", {1, 1, 1, 1, 0}, false, 1},
        {"one of them not", {1, 0, 3, 1, 1}, false, 2},
    };
    fillAll();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (int i = 0; i < kNumSlots; ++i)
            subs[i].opaqueFlags = c.flags[i];
        // Another disabled slot is asked all the same.
        startFrame(mtl, {{"enable_shadow_mtl", c.enableShadow}, {"enable_gi_mtl", false}});
        EXPECT_EQ(mtl.getOpaqueFlags(), c.answer);
    }
}

TEST_F(MtlOverrideTest, DescriptorTextSharesLayers) {
    subs[0].text = "a\n<coatlayer_begin>\n<coatlayer_end>\n";
    subs[2].text = "c\n";
    startFrame(mtl, {{"base_mtl", &subs[0]},
                     {"gi_mtl", &subs[1]},
                     {"enable_gi_mtl", false},
                     {"reflect_mtl", &subs[2]},
                     {"refract_mtl", &subs[0]},
                     {"shadow_mtl", &subs[2]}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              "1 override_mtl\noverride_sub_mtls_offsets 1,1,3,1,3\n"
              "<coatlayer_begin>\na\n<coatlayer_begin>\n<coatlayer_end>\n<coatlayer_end>\n"
              "<coatlayer_begin>\nc\n<coatlayer_end>\n");
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "0 ");
}

}  // namespace
