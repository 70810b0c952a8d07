#include "pelk/contract/samplers.h"

#include "fake_host/fake_renderer.h"
#include "fake_host/recorders.h"
#include "pelk/contract/layered_bsdf.h"
#include "pelk/contract/two_sided_bsdf.h"

namespace {

/// A sampler that takes its share of light and passes the rest on, and traces as the base classes
/// do.
struct Film : RecordingSampler {
    Film(float reflected, float passed) : passes(passed) { diffuse = Color(reflected); }

    Color passes, glow;
    Vector bump;

    Color unshadowed, through, tracedWeight;
    Vector normal;
    int flags = -1;

    Color getDiffuseColor(Color& lightColor) override {
        const Color reflected = lightColor * diffuse;
        lightColor *= passes;
        return reflected;
    }
    Color getLightMult(Color& lightColor) override { return getDiffuseColor(lightColor); }
    Vector getDiffuseNormal(PelkContext& context) override { return context.normal + bump; }
    Color eval(PelkContext& context, const Vector&, Color& lightColor, Color& origLightColor, float,
               int evalFlags) override {
        unshadowed = origLightColor;
        through = context.resultTransparency;
        normal = context.normal;
        seenSide = sideOf(context);
        flags = evalFlags;
        origLightColor *= passes;
        return getDiffuseColor(lightColor);
    }
    Color getSelfIllumination(PelkContext& context) override {
        tracedWeight = context.rayWeight;
        return glow;
    }
    void traceForward(PelkContext& context, int flag) override {
        BRDFSampler::traceForward(context, flag);
    }
};

class SamplersTest : public testing::Test {
protected:
    SamplersTest() { renderer.gi.light = Color(1); }

    void stack(std::vector<Film*> films, Color clear = Color(0)) {
        layers.setNumBSDFs(context, static_cast<int>(films.size()), 0);
        layers.setTransparency(Color(0));
        for (std::size_t i = 0; i < films.size(); ++i)
            layers.setBSDF(static_cast<int>(i), films[i], films[i] ? clear : Color(1), 0);
    }

    FakeRenderer renderer;
    ThreadData thread;
    FakeContext context{renderer, thread};
    Color light{4}, unshadowed{8};
    LayeredBSDF layers;
};

TEST_F(SamplersTest, LayersTakeLightFromTheTopAndPassItOn) {
    Film coat(0.25f, 0.5f), base(0.5f, 0);
    coat.transparency = base.transparency = Color(0.5f);
    coat.bump = {1, 0, 0};
    stack({&coat, nullptr, &base});
    EXPECT_EQ(context.rayWeight, Color(0)) << "what is left for samplers below the last";
    context.rayWeight = Color(1);
    BRDFSampler* face = layers.getBRDF(kFrontSide);
    EXPECT_EQ(face->eval(context, {0, 0, 1}, light, unshadowed, 1, 3), Color(1 + 0.5f * 2));
    EXPECT_EQ(light, Color(0));
    EXPECT_EQ(base.unshadowed, Color(4));
    EXPECT_EQ(base.normal, Vector(0, 0, 1)) << "the bump of the layer above";
    EXPECT_EQ(base.through, Color(0.5f));

    coat.glow = base.glow = Color(8);
    layers.traceBSDFForward(context, 1);
    // Each layer: indirect light by its opacity, and glow.
    EXPECT_EQ(context.resultColor, Color((0.125f + 8) + 0.5f * (0.25f + 8)));
    EXPECT_EQ(base.tracedWeight, Color(0.5f));
    EXPECT_EQ(context.rayWeight, Color(1));
}

TEST_F(SamplersTest, ClearLayersHideNothing) {
    Film opaque(0.5f, 0), amplifier(0, 2), base(1, 0), oneSided(1, 0.5f);
    oneSided.hasFace[kBackSide] = false;
    const struct {
        const char* what;
        Color clear;
        std::vector<Film*> films;
        Color seen, transparency;
    } cases[] = {
        {"half clear", Color(0.5f), {&opaque, &base}, Color(4), Color(0.25f)},
        {"passes no more than came", Color(0), {&amplifier, &base}, Color(4), Color(0)},
        {"made for the other side", Color(0), {&oneSided, &base}, Color(6), Color(0)},
        {"other layers than before", Color(0), {nullptr, &base}, Color(4), Color(0)},
        {"no layer", Color(0), {}, Color(0), Color(1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        stack(c.films, c.clear);
        light = Color(4);
        BRDFSampler* face = layers.getBRDF(kBackSide);
        EXPECT_EQ(face ? face->getDiffuseColor(light) : Color(0), c.seen);
        EXPECT_EQ(layers.getBSDFTransparency(context), c.transparency);
    }
}

TEST_F(SamplersTest, TheVolumeIsThereWhileAHitIsShadedAndStaysWhereARayMayEnter) {
    FakeVolume glass;
    RecordingSampler sampler;
    sampler.volume = &glass;
    sampler.color = {0.25f, 0.5f, 0};
    context.directLight = {1, 0, 0.5f};
    context.onLight = [&](BSDFSampler*) { EXPECT_EQ(context.surfaceVolume, &glass); };
    shadeBSDF(context, &sampler);
    EXPECT_EQ(resultsOf(context), (Results{{1.25f, 0.5f, 0.5f}, Color(0), Color(1), Color(0)}));
    EXPECT_EQ(context.surfaceVolume, nullptr) << "no ray goes in";
    context.onLight = [](BSDFSampler*) { throwIf(true); };
    EXPECT_THROW(shadeBSDF(context, &sampler), ExceptionMsg);
    EXPECT_EQ(context.surfaceVolume, nullptr) << "it goes where shading throws";

    // A shadow ray asks for the transparency alone.
    const Color clear = sampler.transparency = {0, 1.5f, 0.75f};
    context.rayType = kRayShadow;
    shadeBSDF(context, &sampler);
    EXPECT_EQ(resultsOf(context), (Results{{}, clear, {1, 0, 0.25f}, clear}));
    EXPECT_EQ(context.surfaceVolume, &glass);
}

TEST_F(SamplersTest, EachSideIsLitFromItsSideInTheStateInWhichItWasMade) {
    Film first(1, 0), second(0.5f, 0);
    TwoSidedBSDF bsdf;
    const struct {
        const char* what;
        int backSide, flippedSide;
        bool turnedSince;  // by a sampler around this one
        SeenSide first, second;
    } cases[] = {
        {"front", 0, 0, false, {0, 0, 1}, {1, 0, -1}},
        {"back", 1, 0, false, {0, 0, -1}, {1, 0, 1}},
        {"back, turned already", 1, 1, false, {1, 0, 1}, {0, 0, -1}},
        {"front, turned since", 0, 0, true, {0, 0, 1}, {1, 0, -1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        context.backSide = c.backSide;
        context.flippedSide = c.flippedSide;
        bsdf.init(context, Color(0.25f), &first, &second, 0, Color(0));
        BRDFSampler* viewer = bsdf.getBRDF(c.backSide ? kBackSide : kFrontSide);
        EXPECT_NE(viewer, bsdf.getBRDF(c.backSide ? kFrontSide : kBackSide))
            << "hosts light a side beyond by its own face";
        const ScopedFlip turned(context, c.turnedSince);
        const PelkContext before = context;

        const float viewerSide = c.backSide ? -1.0f : 1.0f;
        light = Color(4);
        EXPECT_EQ(viewer->eval(context, {0, 0, viewerSide}, light, unshadowed, 1, 3), Color(3));
        EXPECT_EQ(first.seenSide, c.first);
        light = Color(4);
        second.hasFace[c.second.backSide] = false;  // not the side that light falls on
        EXPECT_EQ(viewer->eval(context, {0, 0, -viewerSide}, light, unshadowed, 1, 3), Color(0.5f));
        second.hasFace[c.second.backSide] = true;
        EXPECT_EQ(second.seenSide, c.second);
        EXPECT_EQ(second.flags, kEvalDiffuse);

        viewer->traceForward(context, 1);
        EXPECT_EQ(context.resultColor, Color(0.75f + 0.25f * 0.5f));
        expectRayAndHitAsBefore(before, context);
    }
    // A side that is missing is clear.
    bsdf.init(context, Color(0.25f), &first, nullptr, 0, Color(0));
    bsdf.traceBSDFForward(context, 1);
    EXPECT_EQ(resultsOf(context),
              (Results{Color(0.75f), Color(0.25f), Color(0.75f), Color(0.25f)}));
    context.backSide = 5;  // any value but 0 is the back
    context.flipSide();
    EXPECT_EQ(sideOf(context), (SeenSide{0, 1, -1}));
    EXPECT_EQ(context.faceNormal + context.geomNormal, Vector(0, 0, -2));
}

}  // namespace
