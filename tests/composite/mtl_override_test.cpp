#include "fake_host/fake_host.h"

namespace {

/// A sampler that writes to the context where hosts may do so.
class BusySampler : public RecordingSampler {
public:
    void traceBSDFForward(PelkContext& context, int) override {
        note("traceBSDFForward");
        context.environmentPriority = 99;
    }
    PelkContext* getNewContext(PelkContext& context, int&, int) override {
        return context.newSpawnedContext(0, Color(1), 0, {});
    }
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
    startFrame(mtl);
    endRender(mtl);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    EXPECT_EQ(subs[kBase].samplersOut, 0) << "lost without an element";
}

TEST_F(MtlOverrideTest, TheEnvironmentHoldsBelowTheMaterialAlone) {
    FakeTexture outer;
    const struct {
        bool use;
        PluginBase* texture;
        EnvironmentRequest request;
    } cases[] = {
        {true, &sky, {&sky, 5, 1}},
        {false, &sky, {nullptr, INT_MIN, 1}},
        {true, nullptr, {nullptr, INT_MIN, 1}},
    };
    BusySampler inner;
    subs[kBase].givenSampler = &inner;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.use << " " << c.texture);
        startFrame(mtl, {{"base_mtl", &subs[kBase]},
                         {"use_environment_override", c.use},
                         {"environment_override", c.texture}});
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
    BusySampler inner;
    inner.hasFace[kBackSide] = false;
    inner.lightMult = inner.transparency = inner.evaluated = Color(0.5f);
    subs[kBase].givenSampler = &inner;
    startFrame(mtl, {{"base_mtl", &subs[kBase]}, {"use_environment_override", true}});
    FakeContext context = hit();
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    BRDFSampler* front = sampler->getBRDF(kFrontSide);
    ASSERT_TRUE(front && front != &inner);
    Color light(4), unshadowed(4);
    EXPECT_EQ(front->eval(context, {0, 0, 1}, light, unshadowed, 1, 1), Color(0.5f));
    EXPECT_EQ(front->getLightMult(light), Color(2));
    EXPECT_EQ(front->getTransparency(context), Color(0.5f));
    int index = 0;
    PelkContext* ray = front->getNewContext(context, index, 1);
    EXPECT_EQ(ray->environment, &sky) << "the spawned ray keeps it";
    ray->releaseContext();
    context.refusesToSpawn = true;
    EXPECT_EQ(front->getNewContext(context, index, 1), nullptr);
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
