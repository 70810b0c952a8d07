#include "fake_host/fake_host.h"

namespace {

enum { kBase, kGi, kReflect, kRefract, kShadow, kNumSlots };
constexpr const char* kEnableNames[] = {"", "enable_gi_mtl", "enable_reflect_mtl",
                                        "enable_refract_mtl", "enable_shadow_mtl"};

class MtlOverrideTest : public OneHit {
protected:
    MtlOverrideTest() {
        for (int i = 0; i < kNumSlots; ++i)
            subs[i].results.color = Color(static_cast<float>(i));
        setParams(mtl, {{"base_mtl", &subs[kBase]}, {"gi_mtl", &subs[kGi]}});
        setParams(mtl, {{"reflect_mtl", &subs[kReflect]}, {"refract_mtl", &subs[kRefract]}});
        setParams(mtl, {{"shadow_mtl", &subs[kShadow]}});
    }

    RecordingMaterial subs[kNumSlots];
    PelkMaterial& mtl = make("MtlOverride");
};

TEST_F(MtlOverrideTest, TheRayPicksItsSlotElseTheBase) {
    const struct {
        u32 rayType;
        int giDepth, disabled, slot;
    } cases[] = {
        {kRayCamera | kRayGi, 0, kBase, kBase},
        {kRayRefract, 0, kBase, kRefract},
        {kRayReflect | kRayRefract, 0, kBase, kReflect},
        {kRayReflect, 1, kBase, kGi},
        {kRayGiLike | kRayReflect, 0, kBase, kGi},
        {kRayShadow | kRayGiLike, 1, kBase, kShadow},
        {kRayShadow | kRayReflect, 0, kShadow, kReflect},
        {kRayShadow, 0, kShadow, kBase},
        {kRayReflect, 1, kGi, kBase},
        {kRayReflect, 0, kReflect, kBase},
        {kRayRefract, 0, kRefract, kBase},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "rayType " << c.rayType << ", giDepth " << c.giDepth
                                        << ", disabled " << c.disabled);
        for (int i = 1; i < kNumSlots; ++i)
            setParams(mtl, {{kEnableNames[i], i != c.disabled}});
        startFrame(mtl);
        context.rayType = c.rayType;
        context.giDepth = c.giDepth;
        mtl.shade(context);
        EXPECT_EQ(context.resultColor, Color(static_cast<float>(c.slot)));
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(subs[c.slot].samplersOut, 1);
        mtl.releaseBSDF(context, sampler);
        EXPECT_EQ(subs[c.slot].samplersOut, 0);
    }
}

TEST_F(MtlOverrideTest, TheEnvironmentHoldsBelowTheMaterialAlone) {
    FakeTexture outer, sky;
    setParams(mtl, {{"environment_override", &sky}, {"environment_priority", 5}});
    RecordingMaterial& usual = subs[kBase];
    for (const bool isUsed : {true, false}) {
        SCOPED_TRACE(isUsed);
        TextureInterface* const below = isUsed ? &sky : &outer;
        startFrame(mtl, {{"use_environment_override", isUsed}});
        context.environment = &outer;
        context.environmentPriority = 3;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(usual.seen.environment, below);
        EXPECT_EQ(usual.seen.environmentPriority, isUsed ? 5 : 3);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(usual.seen.environment, &outer) << "not around getBSDF";
        sampler->traceBSDFForward(context, 1);
        EXPECT_EQ(usual.sampler.seenEnvironment, below);
        usual.sampler.seenEnvironment = nullptr;
        sampler->getBRDF(kFrontSide)->traceForward(context, 1);
        EXPECT_EQ(usual.sampler.seenEnvironment, below);
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}

}  // namespace
