#include "fake_host/fake_renderer.h"
#include "fake_host/heap_probe.h"
#include "fake_host/print.h"
#include "frame/layered_bsdf.h"
#include "frame/two_sided_bsdf.h"

namespace {

/// A sampler that takes its share of light and passes the rest on. It traces as the base class
/// does, and remembers the context in which it was lit.
class Film : public BSDFSampler, public BRDFSampler {
public:
    Film(float reflected, float passed) : reflects(reflected), passes(passed) {}

    Color reflects, passes, clear, glow;
    Vector bump;
    bool spawns = false;
    bool hasFace[2] = {true, true};

    Color light, unshadowed, through, tracedWeight;
    Vector normal;
    int backSide = -1, flippedSide = -1, flags = -1;
    u32 rayType = 0;

    BRDFSampler* getBRDF(BSDFSide side) override { return hasFace[side] ? this : nullptr; }
    Color getDiffuseColor(Color& lightColor) override {
        const Color came = lightColor;
        lightColor *= passes;
        return came * reflects;
    }
    Color getLightMult(Color& lightColor) override { return getDiffuseColor(lightColor); }
    Vector getDiffuseNormal(PelkContext& context) override { return context.normal + bump; }
    Color eval(PelkContext& context, const Vector&, Color& lightColor, Color& origLightColor, float,
               int evalFlags) override {
        light = lightColor;
        unshadowed = origLightColor;
        through = context.resultTransparency;
        normal = context.normal;
        backSide = context.backSide;
        flippedSide = context.flippedSide;
        rayType = context.rayType;
        flags = evalFlags;
        origLightColor *= passes;
        return getDiffuseColor(lightColor);
    }
    Color getTransparency(PelkContext&) override { return clear; }
    Color getSelfIllumination(PelkContext& context) override {
        tracedWeight = context.rayWeight;
        return glow;
    }
    PelkContext* getNewContext(PelkContext& context, int&, int) override {
        return spawns ? context.newSpawnedContext(0, Color(0.5f), kSpawnMirror, {0, 0, 1})
                      : nullptr;
    }
    float setupContext(PelkContext&, PelkContext&, float, int) override { return 1.0f; }
};

/// Looks at the side to which indirect light is gathered.
class SideGi : public FakeGi {
public:
    std::vector<float> normals;
    std::vector<int> flipped;
    void irradiance(Color& out, PelkContext& context) override {
        normals.push_back(context.normal.z);
        flipped.push_back(context.flippedSide);
        FakeGi::irradiance(out, context);
    }
};

class ComposedSamplers : public testing::Test {
protected:
    ComposedSamplers() {
        renderer.sequenceData.giEngine = &gi;
        gi.light = Color(1);
    }

    static void stack(LayeredBSDF& bsdf, PelkContext& context, std::vector<Film*> films,
                      Color clear = Color(0)) {
        bsdf.setNumBSDFs(context, static_cast<int>(films.size()), 0);
        bsdf.setTransparency(Color(0));
        for (size_t i = 0; i < films.size(); ++i)
            bsdf.setBSDF(static_cast<int>(i), films[i], films[i] ? clear : Color(1), 0);
    }

    SideGi gi;
    FakeRenderer renderer;
    ThreadData thread;
};

TEST_F(ComposedSamplers, LayersTakeLightFromTheTopAndPassItOn) {
    Film coat(0.25f, 0.5f), base(0.5f, 0);
    coat.clear = base.clear = Color(0.5f);
    coat.bump = {1, 0, 0};
    FakeContext context(renderer, thread);
    LayeredBSDF bsdf;
    stack(bsdf, context, {&coat, nullptr, &base});
    EXPECT_EQ(context.rayWeight, Color(0)) << "what is left for samplers below the last";
    context.rayWeight = Color(1);
    const PelkContext before = context;

    BRDFSampler* face = bsdf.getBRDF(kFrontSide);
    Color light(4), unshadowed(8);
    EXPECT_EQ(face->eval(context, {0, 0, 1}, light, unshadowed, 1, 3), Color(1 + 0.5f * 2));
    EXPECT_EQ(light, Color(0));
    EXPECT_EQ(base.light, Color(2));
    EXPECT_EQ(base.unshadowed, Color(4));
    EXPECT_EQ(coat.normal, Vector(1, 0, 1));
    EXPECT_EQ(base.normal, Vector(0, 0, 1)) << "the bump of the layer above";
    EXPECT_EQ(base.through, Color(0.5f));
    expectRayAndHitAsBefore(before, context);

    coat.glow = base.glow = Color(8);
    coat.spawns = base.spawns = true;
    renderer.tracedColor = Color(4);
    bsdf.traceBSDFForward(context, 1);
    // Each layer: half covered indirect light, glow, and half of what its own ray sees.
    EXPECT_EQ(context.resultColor, Color((0.125f + 8 + 2) + 0.5f * (0.25f + 8 + 2)));
    EXPECT_EQ(context.resultTransparency, Color(0.25f));
    EXPECT_EQ(context.resultAlpha, Color(0.75f));
    EXPECT_EQ(base.tracedWeight, Color(0.5f));
    EXPECT_EQ(bsdf.getBSDFTransparency(context), Color(0.25f));
    expectRayAndHitAsBefore(before, context);
}

TEST_F(ComposedSamplers, ClearLayersHideNothing) {
    Film opaque(0.5f, 0), amplifier(0, 2), base(1, 0);
    const struct {
        const char* what;
        Color clear;
        std::vector<Film*> films;
        Color seen, transparency;
    } cases[] = {
        {"covered", Color(0), {&opaque, &base}, Color(0.5f), Color(0)},
        {"half clear", Color(0.5f), {&opaque, &base}, Color(1), Color(0.25f)},
        {"wholly clear", Color(1), {&opaque, &base}, Color(1.5f), Color(1)},
        {"passes no more than came", Color(0), {&amplifier, &base}, Color(1), Color(0)},
        {"nothing there", Color(0), {nullptr, nullptr}, Color(0), Color(1)},
        {"no layer", Color(0), {}, Color(0), Color(1)},
    };
    LayeredBSDF bsdf;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeContext context(renderer, thread);
        stack(bsdf, context, c.films, c.clear);
        Color light(1);
        if (BRDFSampler* face = bsdf.getBRDF(kBackSide))
            EXPECT_EQ(face->getDiffuseColor(light), c.seen);
        else
            EXPECT_EQ(c.seen, Color(0));
        EXPECT_EQ(bsdf.getBSDFTransparency(context), c.transparency);
    }
}

TEST_F(ComposedSamplers, LayersThatWereMadeForTheOtherSideStay) {
    Film front(1, 0.5f), both(1, 0.5f);
    front.hasFace[kBackSide] = false;
    FakeContext context(renderer, thread);
    LayeredBSDF bsdf;
    stack(bsdf, context, {&front, &both});
    Color light(1);
    EXPECT_EQ(bsdf.getBRDF(kBackSide)->getDiffuseColor(light), Color(1.5f));

    // A smaller stack in the same storage knows nothing of the last one.
    const HeapProbe heap;
    stack(bsdf, context, {nullptr, &both});
    light = Color(1);
    EXPECT_EQ(bsdf.getBRDF(kFrontSide)->getDiffuseColor(light), Color(1));
    EXPECT_EQ(bsdf.getBSDF(0), nullptr);
    EXPECT_EQ(heap.requests(), 0);
}

TEST_F(ComposedSamplers, EachSideIsLitFromItsSideInTheStateInWhichItWasMade) {
    Film first(1, 0), second(0.5f, 0);
    const Color t(0.25f);
    const struct {
        const char* what;
        int backSide, flippedSide;
        bool turnedSince;  // by a sampler around this one
        int firstBackSide;
        float firstNormal;
    } cases[] = {
        {"front", 0, 0, false, 0, 1},
        {"back", 1, 0, false, 0, -1},
        {"back, turned already", 1, 1, false, 1, 1},
        {"front, turned since", 0, 0, true, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeContext context(renderer, thread);
        context.backSide = c.backSide;
        context.flippedSide = c.flippedSide;
        TwoSidedBSDF bsdf;
        bsdf.init(context, t, &first, &second, 0, Color(0));
        BRDFSampler* viewer = bsdf.getBRDF(c.backSide ? kBackSide : kFrontSide);
        EXPECT_NE(viewer, bsdf.getBRDF(c.backSide ? kFrontSide : kBackSide))
            << "hosts light a side beyond by its own face";
        const ScopedFlip turned(context, c.turnedSince);
        const PelkContext before = context;

        const float viewerSide = c.backSide ? -1.0f : 1.0f;
        Color light(4), unshadowed(4);
        EXPECT_EQ(viewer->eval(context, {0, 0, viewerSide}, light, unshadowed, 1, 3), Color(3));
        EXPECT_EQ(first.backSide, c.firstBackSide);
        EXPECT_EQ(first.flippedSide, 0);
        EXPECT_EQ(first.normal.z, c.firstNormal);
        EXPECT_EQ(first.flags, 3);
        light = Color(4);
        EXPECT_EQ(viewer->eval(context, {0, 0, -viewerSide}, light, unshadowed, 1, 3), Color(0.5f));
        EXPECT_EQ(second.backSide, 1 - c.firstBackSide);
        EXPECT_EQ(second.flippedSide, 0);
        EXPECT_EQ(second.normal.z, -c.firstNormal);
        EXPECT_EQ(second.flags, kEvalDiffuse);
        EXPECT_TRUE(second.rayType & kRayNoSpecular);

        gi.normals.clear();
        gi.flipped.clear();
        viewer->traceForward(context, 1);
        EXPECT_EQ(context.resultColor, Color(0.75f + 0.25f * 0.5f));
        EXPECT_EQ(gi.normals, (std::vector<float>{c.firstNormal, -c.firstNormal}));
        EXPECT_EQ(gi.flipped, (std::vector<int>{0, 1 - c.firstBackSide}));
        expectRayAndHitAsBefore(before, context);
    }
}

TEST_F(ComposedSamplers, TranslucencyMixesTheSides) {
    Film red(0, 0), white(1, 0), clear(0, 1);
    red.reflects = {0.5f, 0, 0};
    white.glow = Color(1);
    clear.clear = Color(1);
    const struct {
        const char* what;
        Film *first, *second;
        float t;
        bool multiply;
        Color color, transparency;
    } cases[] = {
        {"opaque", &red, &white, 0, false, {0.5f, 0, 0}, Color(0)},
        {"glow and light from beyond", &red, &white, 0.5f, false, {1.25f, 1, 1}, Color(0)},
        {"filtered", &red, &white, 0.5f, true, {0.75f, 0, 0}, Color(0)},
        {"translucent alone", &red, &white, 1, false, Color(2), Color(0)},
        {"clear on both sides", &clear, &clear, 0.5f, false, Color(0), Color(1)},
        {"nothing beyond", &red, nullptr, 0.5f, true, {0.25f, 0, 0}, Color(0.5f)},
        {"nothing in front", nullptr, &white, 0.5f, true, Color(1), Color(0.5f)},
        {"nothing", nullptr, nullptr, 0.5f, true, Color(0), Color(1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeContext context(renderer, thread);
        TwoSidedBSDF bsdf;
        bsdf.init(context, Color(c.t), c.first, c.second, c.multiply, Color(0));
        bsdf.traceBSDFForward(context, 1);
        EXPECT_EQ(context.resultColor, c.color);
        EXPECT_EQ(context.resultTransparency, c.transparency);
        EXPECT_EQ(bsdf.getBSDFTransparency(context), c.transparency);
        const bool twoFaces = c.t > 0 && (c.first || c.second);
        EXPECT_EQ(bsdf.getBRDF(kFrontSide) != bsdf.getBRDF(kBackSide), twoFaces);
    }
}

}  // namespace
