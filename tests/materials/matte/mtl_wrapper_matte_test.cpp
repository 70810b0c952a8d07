#include "fake_host/fake_host.h"
#include "pelk/contract/surface_properties.h"

namespace {

class MatteTest : public OneHit {
protected:
    using Channels = std::vector<std::pair<int, Color>>;

    MatteTest() {
        renderer.environmentColor = Color(2);
        base.results = {Color(77), Color(0), Color(0), Color(0)};
        base.takesNull = true;
        base.sampler.color = Color(1);
        setParams(mtl, {{"base_material", &base}, {"matte_surface", true}});
    }

    /// Has the next hits find this much light from straight above, in two samples of one light.
    void shine(Color unshadowed, Color shadowed) {
        renderer.onLight = [=](PelkContext& lit, BRDFSampler* sampler) {
            for (int i = 0; i < 2; ++i) {
                Color light = shadowed, original = unshadowed;
                sampler->eval(lit, lit.normal, light, original, 1e18f, kEvalDiffuse);
            }
            sampler->multiplyLight(0.5f);
            sampler->lightFinished(0);
            sampler->lightFinished(0);
        };
    }

    PelkMaterial& mtl = make("MtlWrapper");
};

TEST_F(MatteTest, RaysSeeTheMatteByTheirKind) {
    const struct {
        int secondary;
        u32 rayType;
        int depth, giDepth, isMatte;
    } cases[] = {{0, kRayCamera, 0, 1, 1},
                 {0, kRayCamera | kRayReflect, 1, 0, 0},
                 {1, kRayCamera | kRayReflect, 1, 0, 1},
                 {2, kRayRefract, 3, 0, 1},
                 {1, kRayCamera | kRayGi, 2, 1, 0},
                 {1, kRayCamera | kRayShadow, 0, 0, 0},
                 {1, kRayCamera | kRayGiLike, 0, 0, 0},
                 {1, kRayCamera | kRayNoMatte, 0, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.secondary << ", rayType " << c.rayType);
        startFrame(mtl, {{"matte_for_secondary_rays", c.secondary}});
        context.rayType = c.rayType;
        context.traceDepth = c.depth;
        context.giDepth = c.giDepth;
        context.shadedFlags = 0;
        mtl.shade(context);
        EXPECT_EQ(context.resultColor, c.isMatte ? Color(2) : Color(77));
        EXPECT_EQ(context.shadedFlags, c.isMatte ? 8u : 0u);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        sampler->traceBSDFForward(context, 1);
        EXPECT_EQ(resultsOf(context) == kOpaqueBlack, c.isMatte);
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MatteTest, IsNotThereForTheRaysOfAnotherMatte) {
    PelkSurfaceProperties matte, plain;
    matte.matte_surface = 1;
    using Case = std::tuple<bool, PelkSurfaceProperties*, bool>;
    for (const auto& [hides, parents, isHidden] :
         {Case{true, &matte, true}, {false, &matte, false}, {true, &plain, false}}) {
        startFrame(mtl, {{"no_gi_on_other_mattes", hides}});
        FakeContext parent = hit();
        parent.surfaceProperties = parents;
        context.parentContext = &parent;
        context.rayType = kRayShadow;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), isHidden ? kNothing : base.results);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(log.has("getBSDF"), !isHidden);
        sampler->traceBSDFForward(context, 1);
        EXPECT_EQ(resultsOf(context) == kNothing, isHidden);
        mtl.releaseBSDF(context, sampler);
        EXPECT_TRUE(log.has("releaseBSDF")) << "the base is told of the null";
    }
}

TEST_F(MatteTest, ShowsTheBasesReflectionsOverTheBackground) {
    base.results = {Color(77), Color(0.25f), Color(0.5f), Color(0.25f)};
    base.onShade = [](PelkContext& inner) {
        const Color half(0.5f), one(1);
        for (const int alias : {102, 103, 139, 104})
            inner.resultFragment->addAlias(alias, &half);
        // A fragment of the list starts empty, although the last hit left something in it.
        Fragment* other = inner.fragmentList->getFragment(3);
        EXPECT_EQ(*static_cast<Color*>(other->getAliasPtr(103)), Color(0));
        other->addAlias(103, &one);
        inner.resultFragment->addFragment(other, half, 0);
    };
    const struct {
        float reflection;
        bool affectsAlpha;
        float own, left, alpha;
    } cases[] = {
        {1, true, 1.5f, 0.375f, 0.25f + 0.5f * 0.375f},
        {0.5f, true, 1.25f, 0.5625f, 0.25f + 0.25f * 0.375f},
        {0.5f, false, 1.25f, 0.5625f, 0.25f},
    };
    for (const auto& c : cases) {
        setParams(mtl, {{"reflection_amount", c.reflection}, {"affect_alpha", c.affectsAlpha}});
        startFrame(mtl, {{"alpha_contribution", 0.5f}});
        context.resultFragment = nullptr;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), (Results{Color(c.own + 2 * c.left), Color(0.25f),
                                               Color(c.alpha), Color(0.625f)}));
        context.resultFragment = &fragment;
        fragment.aliases.clear();
        const PelkContext before = context;
        mtl.shade(context);
        expectRayAndHitAsBefore(before, context);
        EXPECT_EQ(context.resultFragment, &fragment);
        EXPECT_EQ(context.resultColor, Color(c.own)) << "the host adds the background";
        const Color lost(2 * (1 - c.left)), left(2 * c.left);
        EXPECT_EQ(fragment.aliases, (Channels{{105, lost}, {4, left}, {124, left}}));
    }
}

TEST_F(MatteTest, ShadowsDimTheBackgroundAndTintIt) {
    const struct {
        const char* what;
        Color unshadowed, shadowed;
        float brightness;
        Color left, surplus;
    } cases[] = {
        {"none, half, full", {4, 4, 4}, {4, 2, 0}, 1, {1, 0.5f, 0}, Color(0)},
        {"half as deep", {4, 4, 4}, {4, 2, 0}, 0.5f, {1, 0.75f, 0.5f}, Color(0)},
        {"more light than there is", {4, 0, 4}, {5, 1, 4.0000005f}, 1, Color(1), {1, 1, 0}},
        {"too dark to tell", {5e-7f, 0, 0}, {-1e-6f, 0, -1}, 1, Color(1), Color(0)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        shine(c.unshadowed, c.shadowed);
        setParams(mtl, {{"shadows", true}, {"affect_alpha", true}});
        setParams(mtl, {{"shadow_tint_color", Color(0.5f)}});
        startFrame(mtl, {{"shadow_brightness", c.brightness}});
        mtl.shade(context);
        EXPECT_EQ(context.resultColor, c.surplus + complement(c.left) * 0.5f + c.left * Color(2));
        EXPECT_EQ(context.resultAlpha, complement(c.left));
    }
}

TEST_F(MatteTest, ShadowChannelsAreOfDirectLightAndShadowsOfAll) {
    shine(Color(4, 0, 4), Color(1, 0, 4));
    renderer.gi.matteUnshadowed = Color(8);
    renderer.gi.matteShadowed = Color(6, 8, 8);
    context.resultFragment = &fragment;
    startFrame(mtl, {{"shadows", true}, {"gi_amount", 0.5f}});
    mtl.shade(context);
    EXPECT_EQ(fragment.aliases, (Channels{{111, Color(1, 0, 4)},
                                          {112, Color(3, 0, 0)},
                                          {128, Color(0.75f, 0, 0)},
                                          {105, Color(1, 0, 0)},
                                          {4, Color(1, 2, 2)},
                                          {124, Color(1, 2, 2)}}));
}

TEST_F(MatteTest, SamplerMeasuresWhatReachesTheSurface) {
    const auto measured = [&](Vector direction, float density, int mis) {
        renderer.gi.mis = mis;
        startFrame(mtl);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        Color light(3), original(5);
        const Color seen = sampler->getBRDF(kBackSide)->eval(context, direction, light, original,
                                                             density, kEvalDiffuse);
        EXPECT_EQ(light, Color(0));
        EXPECT_EQ(original, Color(0)) << "a matte lets no light through";
        BRDFSampler* const face = sampler->getBRDF(kFrontSide);
        EXPECT_EQ(face->getDiffuseColor(light = Color(3)), Color(3)) << "as of white";
        EXPECT_EQ(light, Color(0));
        mtl.releaseBSDF(context, sampler);
        return seen.r;
    };
    const Vector up(0, 0, 1), slanted(0.8f, 0, 0.6f), level(1, 0, 0);
    EXPECT_FLOAT_EQ(measured(slanted, 1, 0), 3 * 0.6f);
    EXPECT_EQ(measured(-up, 1, 1), 0) << "from below";
    EXPECT_EQ(measured(up, 2, 1), 1.5f) << "shared with what indirect rays find";
    EXPECT_EQ(measured(level, 0, 1), 0) << "nothing to weight";
}

TEST_F(MatteTest, TracesItsOwnMirrorRayForMaya) {
    FakeTexture alpha, filter{AColor{Color(0.5f), 0.0f}}, brightness;
    alpha.number = 0.75f;
    brightness.number = 0.5f;
    renderer.tracedColor = Color(3);
    shine(Color(4), Color(2));  // with that brightness the shadow takes a quarter
    setParams(mtl, {{"maya_background_shader_compatibility", true}, {"shadows", true}});
    setParams(mtl, {{"matte_for_secondary_rays", 1}, {"alpha_contribution_tex", &alpha}});
    setParams(mtl, {{"reflection_filter_tex", &filter}, {"shadow_brightness_tex", &brightness}});
    const struct {
        const char* what;
        int ownDepth;
        bool override, enabled, affectsAlpha, isTraced;
        float tracedAlpha, alpha;
    } cases[] = {
        {"own depth reached", 1, false, true, false, false, 1, 0},
        {"global depth over one's own", 1, true, true, false, true, 1, 0.75f},
        {"no reflections", -1, false, false, false, false, 1, 0},
        {"reflects something", -1, false, true, true, true, 1, 0.75f},
        {"reflects nothing", -1, false, true, true, true, 0.9e-6f, 0.25f * 0.75f},
    };
    context.traceDepth = 1;
    context.rayDir = {0.6f, 0, -0.8f};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        renderer.sequenceData.depthOverride = c.override;
        renderer.sequenceData.reflectionsEnabled = c.enabled;
        renderer.tracedAlpha = Color(c.tracedAlpha);
        renderer.traced.clear();
        startFrame(mtl, {{"trace_depth", c.ownDepth}, {"affect_alpha", c.affectsAlpha}});
        mtl.shade(context);
        // What isn't traced stays clear, and the scene behind shows by itself.
        EXPECT_EQ(context.resultColor, c.isTraced ? Color(1.5f + 1.5f) : Color(0));
        EXPECT_EQ(context.resultTransparency, c.isTraced ? Color(0) : Color(1));
        EXPECT_EQ(context.resultAlpha, Color(c.alpha));
        EXPECT_EQ(renderer.traced.size(), c.isTraced ? 1u : 0u);
    }
    EXPECT_THAT(renderer.traced.at(0).rayDir2, VectorNear(Vector(0.6f, 0, 0.8f), 1e-6f));
}

TEST_F(MatteTest, MayaVariantIsBlackToReflectedAndRefractedRays) {
    PelkMaterial& maya = make("MtlWrapperMaya");
    startFrame(maya, {{"base_material", &base}, {"matte_surface", true}});
    context.resultFragment = &fragment;
    for (const u32 bit : {kRayReflect, kRayRefract, kRayGi}) {
        context.rayType = kRayCamera | bit;
        log.clear();
        maya.shade(context);
        EXPECT_EQ(resultsOf(context) == kOpaqueBlack, bit != kRayGi);
        EXPECT_EQ(log.calls.empty(), bit != kRayGi) << "not even the fragment is cleared";
    }
}

}  // namespace
