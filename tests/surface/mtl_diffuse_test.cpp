#include <limits>

#include "fake_host/fake_host.h"

namespace {

constexpr int kColorIndex = 3, kAlphaIndex = 5;

class MtlDiffuseTest : public FakeHost {
protected:
    MtlDiffuseTest() {
        renderer.gi.light = Color(0.5f);
        renderer.tracedColor = Color(8, 4, 2);
    }

    /// The sampler of a hit, resolved to its front.
    BRDFSampler* frontOf(BSDFSampler* sampler) { return sampler->getBRDF(kFrontSide); }

    PelkMaterial& mtl = make("MtlDiffuse");
};

Color reflectedOf(BSDFSampler* sampler) {
    Color white(1);
    return sampler->getBRDF(kFrontSide)->getDiffuseColor(white);
}

TEST_F(MtlDiffuseTest, DefaultsShadeMidGreyWithoutARay) {
    startFrame(mtl);
    FakeContext context = hit();
    context.directLight = Color(0.125f, 0.25f, 0.5f);
    mtl.shade(context);
    // 0.5 * 0.5 of indirect light, and the direct light as the context gives it.
    EXPECT_EQ(resultsOf(context),
              (Results{Color(0.375f, 0.5f, 0.75f), Color(0), Color(1), Color(0)}));
    EXPECT_EQ(log.calls,
              (std::vector<std::string>{"usesLightMis", "computeDirectLighting", "irradiance"}));
}

TEST_F(MtlDiffuseTest, TransparencyAndReflectionShareTheLight) {
    const struct {
        const char* what;
        Color reflection, transparency, lit, mirrored, pooled;
    } cases[] = {
        // With E = (1 - T) R: lit = D (1 - mean E) (1 - T), pooled = D (1 - mean R), D = 0.5.
        {"mirror alone", Color(0.5f), Color(0), Color(0.25f), Color(0.5f), Color(0.25f)},
        {"filtered", Color(0.5f), Color(0.5f), Color(0.1875f), Color(0.25f), Color(0.25f)},
        {"white mirror", Color(1), Color(0), Color(0), Color(1), Color(0)},
        {"clear", Color(0.5f), Color(1), Color(0), Color(0), Color(0.25f)},
        {"more than all", Color(0.5f), Color(2), Color(0), Color(0), Color(0.25f)},
        {"a mirror above 1", Color(4), Color(0.5f), Color(0), Color(2), Color(0)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"reflection", c.reflection}, {"transparency", c.transparency}});
        FakeContext context = hit();
        context.directLight = Color(0.25f);
        Color litBy;
        context.onLight = [&](BSDFSampler* sampler) { litBy = reflectedOf(sampler); };
        mtl.shade(context);
        EXPECT_THAT(litBy, ColorNear(c.lit, 1e-6f));
        const Color expected =
            c.lit * Color(0.5f) + Color(0.25f) + c.mirrored * renderer.tracedColor;
        EXPECT_THAT(context.resultColor, ColorNear(expected, 1e-5f));
        EXPECT_EQ(context.resultTransparency, c.transparency);
        EXPECT_EQ(context.resultAlphaTransparency, c.transparency);
        EXPECT_EQ(context.resultAlpha, complement(c.transparency));
        EXPECT_EQ(log.count("traceRay"), 1) << "a ray of no weight is traced all the same";

        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_THAT(reflectedOf(sampler), ColorNear(c.pooled, 1e-6f)) << "transparency is left out";
        EXPECT_EQ(frontOf(sampler)->getTransparency(context), Color(0));
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, ShadowRaysAndBacksAreAFilterOnly) {
    FakeTexture texture(AColor{Color(1), 1.0f});
    FakeChannel colorChannel(kColorIndex), alphaChannel(kAlphaIndex);
    startFrame(mtl, {{"diffuse_tex", &texture},
                     {"reflection", Color(1)},
                     {"transparency", Color(0.25f, 0.5f, 3.0f)},
                     {"render_channel_color", &colorChannel},
                     {"render_channel_alpha", &alphaChannel}});
    for (const bool isShadow : {true, false}) {
        SCOPED_TRACE(isShadow ? "shadow ray" : "back");
        log.clear();
        RecordingFragment fragment;
        FakeContext context = hit();
        context.resultFragment = &fragment;
        if (isShadow)
            context.rayType = kRayShadow;
        else
            context.backSide = 1;
        mtl.shade(context);
        const Color filter(0.25f, 0.5f, 3.0f), opacity(0.75f, 0.5f, 0.0f);
        EXPECT_EQ(resultsOf(context), (Results{Color(0), filter, opacity, filter}));
        EXPECT_EQ(log.calls, (std::vector<std::string>{"setChannel", "setChannel"}));
        EXPECT_EQ(fragment.channels, (std::vector<std::pair<int, Color>>{{kColorIndex, Color(0)},
                                                                         {kAlphaIndex, opacity}}));
    }
}

TEST_F(MtlDiffuseTest, ChannelsGetTheWholeResultOrTheIndexOfNone) {
    FakeChannel colorChannel(kColorIndex);
    FakeTexture noChannel;
    startFrame(mtl, {{"reflection", Color(1)},
                     {"render_channel_color", &colorChannel},
                     {"render_channel_alpha", &noChannel}});
    RecordingFragment fragment;
    FakeContext context = hit();
    context.resultFragment = &fragment;
    mtl.shade(context);
    ASSERT_EQ(fragment.channels.size(), 2u);
    EXPECT_EQ(fragment.channels[0], std::make_pair(kColorIndex, renderer.tracedColor))
        << "the reflection belongs to it";
    EXPECT_EQ(fragment.channels[1], std::make_pair(-1, Color(1)));
}

TEST_F(MtlDiffuseTest, TextureIsBlendedByItsAlphaAndReadWithItsWeight) {
    const Color base(0.5f, 0.25f, 1.0f), tex(0.25f, 0.5f, 0.75f);
    const struct {
        const char* what;
        float mult, alpha;
        bool isRead;
        Color blended;
    } cases[] = {
        {"covers", 1.0f, 1.0f, true, tex},
        {"adds where its alpha is 0", 1.0f, 0.0f, true, base + tex},
        {"half of it", 0.5f, 1.0f, true, Color(0.375f, 0.375f, 0.875f)},
        {"alpha is clamped below", 1.0f, -1.0f, true, base + tex},
        {"alpha is clamped above", 1.0f, 4.0f, true, tex},
        {"the multiplier isn't", 2.0f, 1.0f, true, Color(0.0f, 0.75f, 0.5f)},
        {"at the bound", 1e-12f, 1.0f, true, base},
        {"below the bound", std::nextafter(1e-12f, 0.0f), 1.0f, false, base},
        {"a negative multiplier", -1.0f, 1.0f, false, base},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeTexture texture(AColor{tex, c.alpha});
        startFrame(mtl,
                   {{"diffuse", base}, {"diffuse_tex", &texture}, {"diffuse_tex_mult", c.mult}});
        FakeContext context = hit();
        context.rayWeight = Color(0.5f, 1.0f, 2.0f);
        const PelkContext before = context;
        Color shaded;
        context.onLight = [&](BSDFSampler* sampler) { shaded = reflectedOf(sampler); };
        mtl.shade(context);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_THAT(shaded, ColorNear(c.blended, 1e-6f));
        EXPECT_EQ(reflectedOf(sampler), shaded) << "both ways blend alike";
        EXPECT_EQ(log.count("getTexColor"), c.isRead ? 2 : 0);
        if (c.isRead) {
            EXPECT_EQ(texture.seenWeight, before.rayWeight * c.mult);
        }
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, ReflectionIsTracedWhereItCounts) {
    const float tooSmall = std::nextafter(1e-3f, 0.0f);
    const struct {
        const char* what;
        Color reflection;
        float weight;
        u32 rayType;
        int depth, reflectiveGi, rays;
    } cases[] = {
        {"on the bound", Color(1e-3f, 0, 0), 1, kRayCamera, 0, 0, 1},
        {"below the bound", Color(tooSmall, 0, 0), 1, kRayCamera, 0, 0, 0},
        {"the weight of the ray counts", Color(0.5f), 1e-4f, kRayCamera, 0, 0, 0},
        {"last depth", Color(1), 1, kRayCamera, 4, 0, 1},
        {"too deep", Color(1), 1, kRayCamera, 5, 0, 0},
        {"indirect", Color(1), 1, kRayCamera | kRayGi, 1, 0, 0},
        {"indirect where mirrors are wanted", Color(1), 1, kRayCamera | kRayGi, 1, 1, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"reflection", c.reflection}});
        renderer.sequenceData.reflectiveGi = c.reflectiveGi;
        FakeContext context = hit();
        context.rayWeight = Color(c.weight);
        context.rayType = c.rayType;
        context.traceDepth = c.depth;
        mtl.shade(context);
        EXPECT_EQ(log.count("traceRay"), c.rays);
    }
}

TEST_F(MtlDiffuseTest, MirrorRayLeavesAsTheHostLinksIt) {
    startFrame(mtl, {{"reflection", Color(0.5f)}, {"transparency", Color(0.5f)}});
    for (const bool isOrphan : {false, true}) {
        SCOPED_TRACE(isOrphan ? "without a parent" : "with a parent");
        renderer.traced.clear();
        FakeContext context = hit();
        context.rayDir = {0.6f, 0.0f, -0.8f};
        context.spawnsOrphans = isOrphan;
        mtl.shade(context);
        ASSERT_EQ(context.spawnRequests.size(), 1u);
        const SpawnRequest& request = context.spawnRequests[0];
        const Vector r(0.6f, 0.0f, 0.8f);
        EXPECT_EQ(request.index, 0);
        EXPECT_EQ(request.flags, 0x8002u);
        EXPECT_EQ(request.weight, Color(0.25f));
        EXPECT_THAT(request.direction, VectorNear(r, 1e-6f));
        ASSERT_EQ(renderer.traced.size(), 1u);
        const PelkContext& ray = renderer.traced[0];
        EXPECT_EQ(ray.rayClipDistance, 1e18f);
        EXPECT_EQ(ray.rayDir, isOrphan ? Vector() : request.direction);
        EXPECT_EQ(ray.rayDir2, ray.rayDir);
        EXPECT_EQ(ray.rayOrigin, isOrphan ? Point() : ray.spawnOrigin);
        EXPECT_EQ(ray.parentHitLink, isOrphan ? 0 : context.hitLink);
        EXPECT_EQ(ray.rayMaxT, isOrphan ? 0.0 : 999999984306749440.0);
    }
    FakeContext context = hit();
    context.refusesToSpawn = true;
    mtl.shade(context);
    EXPECT_EQ(context.resultAlpha, Color(0.5f)) << "without a ray the rest still stands";
}

TEST_F(MtlDiffuseTest, MirrorFallsBackOnTheGeometryWhereItWouldEnterTheSurface) {
    startFrame(mtl, {{"reflection", Color(1)}});
    const Vector d(0.8f, 0.0f, -0.6f);
    const struct {
        const char* what;
        Vector normal, r;
    } cases[] = {
        // d - 2 n (n . d); the normal (-0.6, 0, 0.8) would send it to (-0.352, 0, 0.936).
        {"a shading normal towards the ray", {-0.6f, 0.0f, 0.8f}, {-0.352f, 0.0f, 0.936f}},
        // Turned the other way it would be (0.8, 0, -0.6), straight into the surface.
        {"a shading normal across the ray", {0.6f, 0.0f, 0.8f}, {0.8f, 0.0f, 0.6f}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeContext context = hit();
        context.rayDir = d;
        context.normal = c.normal;
        mtl.shade(context);
        EXPECT_THAT(context.spawnRequests.at(0).direction, VectorNear(c.r, 1e-6f));
    }
}

TEST_F(MtlDiffuseTest, SamplerOffersItsMirrorUnlessAskedNotTo) {
    const struct {
        const char* what;
        Color reflection;
        int doDiffuse;
        bool offers;
    } cases[] = {
        {"mirror", Color(0.5f), 0, true},          {"mirror with diffuse", Color(0.5f), 1, true},
        {"no rays wanted", Color(1), 2, false},    {"no mirror", Color(0), 1, false},
        {"next to none", Color(9e-11f), 1, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"reflection", c.reflection}, {"transparency", Color(0.5f)}});
        FakeContext context = hit();
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        int index = 0;
        PelkContext* ray = frontOf(sampler)->getNewContext(context, index, c.doDiffuse);
        EXPECT_EQ(ray != nullptr, c.offers);
        if (ray) {
            EXPECT_EQ(context.spawnRequests[0].index, 1);
            EXPECT_EQ(context.spawnRequests[0].weight, c.reflection);
            EXPECT_EQ(context.spawnRequests[0].flags, 0x8002u);
            EXPECT_EQ(context.spawnRequests[0].direction, -context.rayDir);
            ray->releaseContext();
        }
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, SetupMirrorsTheRayAndItsDerivatives) {
    startFrame(mtl, {{"reflection", Color(1)}});
    FakeContext context = hit();
    context.rayDir = {0.6f, 0.0f, -0.8f};
    context.rayDerivX = {0.5f, 0.0f, 0.25f};
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    PelkContext ray;
    EXPECT_EQ(frontOf(sampler)->setupContext(context, ray, 0.0f, 0), 1.0f);
    EXPECT_THAT(ray.rayDir, VectorNear(Vector(0.6f, 0.0f, 0.8f), 1e-6f));
    EXPECT_EQ(ray.rayDir2, ray.rayDir);
    EXPECT_EQ(ray.rayOrigin, context.hitPoint);
    EXPECT_EQ(ray.rayMinT, 0.0);
    EXPECT_EQ(ray.rayMaxT, 999999984306749440.0);
    // r - d is along z, so that z alone changes its sign.
    EXPECT_THAT(ray.rayDerivX, VectorNear(Vector(0.5f, 0.0f, -0.25f), 1e-6f));
    EXPECT_THAT(ray.rayDerivY, VectorNear(Vector(0.0f, 0.5f, -0.25f), 1e-6f));

    // A ray in the plane of the surface isn't turned: the axis between has no length.
    context.rayDir = {1.0f, 0.0f, 0.0f};
    frontOf(sampler)->setupContext(context, ray, 0.0f, 0);
    EXPECT_EQ(ray.rayDir, context.rayDir);
    EXPECT_EQ(ray.rayDerivX, context.rayDerivX);
    mtl.releaseBSDF(context, sampler);
}

TEST_F(MtlDiffuseTest, EvalWeightsTheLightAndTakesItAll) {
    const Vector up(0.0f, 0.0f, 1.0f), slanted(0.6f, 0.0f, 0.8f), down(0.0f, 0.0f, -1.0f),
        level(1.0f, 0.0f, 0.0f);
    const struct {
        const char* what;
        Vector direction;
        float prob;
        int flags, mis;
        float share;
    } cases[] = {
        {"the cosine", slanted, 2.0f, 1, 0, 0.8f},
        {"from below", down, 2.0f, 1, 0, 0.0f},
        {"shared: 4 / (4 + 4)", up, 2.0f, 1, 1, 0.5f},
        {"shared: 0.8 * 16 / (1.6^2 + 16)", slanted, 4.0f, 1, 1, 0.8f * 16.0f / 18.56f},
        {"a light without extent", up, 1e18f, 1, 1, 1.0f},
        {"nothing to share", level, 0.0f, 1, 1, 0.0f},
        {"diffuse light not wanted", up, 2.0f, 2, 0, 0.0f},
        {"other bits don't matter", up, 2.0f, 7, 0, 1.0f},
    };
    const Color light(2, 4, 8);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        renderer.gi.mis = c.mis;
        startFrame(mtl);
        FakeContext context = hit();
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        Color shadowed = light, unshadowed(9);
        const Color seen =
            frontOf(sampler)->eval(context, c.direction, shadowed, unshadowed, c.prob, c.flags);
        EXPECT_THAT(seen, ColorNear(light * 0.5f * c.share, 1e-5f));
        EXPECT_EQ(shadowed, Color(0));
        EXPECT_EQ(unshadowed, Color(0));
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, SamplerTracesItsIndirectLightAndHasOneSide) {
    startFrame(mtl, {{"transparency", Color(0.5f)}});
    FakeContext context = hit();
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    EXPECT_EQ(sampler->getBRDF(kBackSide), nullptr);
    frontOf(sampler)->traceForward(context, 1);
    EXPECT_EQ(resultsOf(context), (Results{Color(0.25f), Color(0), Color(1), Color(0)}));
    frontOf(sampler)->traceForward(context, 0);
    EXPECT_EQ(resultsOf(context), (Results{Color(0), Color(0), Color(1), Color(0)}));
    Color light(1, 2, 4);
    EXPECT_EQ(frontOf(sampler)->getLightMult(light), Color(0.5f, 1, 2));
    EXPECT_EQ(light, Color(0)) << "nothing is left for layers below";
    mtl.releaseBSDF(context, sampler);
}

TEST_F(MtlDiffuseTest, SamplersAreReusedPerThreadAndGoneOutsideARender) {
    FakeContext first = hit(0), second = hit(1);
    EXPECT_EQ(mtl.getBSDF(first, 0), nullptr) << "before a render";
    startFrame(mtl, {{"reflection", Color(0.75f)}});
    BSDFSampler* sampler = mtl.getBSDF(first, 0);
    BSDFSampler* other = mtl.getBSDF(second, 0);
    EXPECT_NE(sampler, other);
    mtl.releaseBSDF(first, nullptr);
    mtl.releaseBSDF(first, sampler);
    mtl.releaseBSDF(second, other);
    startFrame(mtl, {{"reflection", Color(0)}});
    EXPECT_EQ(mtl.getBSDF(first, 0), sampler) << "the pool outlives the frame";
    EXPECT_EQ(reflectedOf(sampler), Color(0.5f)) << "the last frame shows through";
    mtl.releaseBSDF(first, sampler);
    endRender(mtl);
    EXPECT_EQ(mtl.getBSDF(first, 0), nullptr) << "behind a render";
}

TEST_F(MtlDiffuseTest, DescriptorTextHoldsColourAndTexture) {
    startFrame(mtl, {{"diffuse", Color(0.25f, 0.5f, 1)}, {"reflection", Color(1)}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              "1 diffuse\ncolor_value 0.250000 0.500000 1.000000\n");
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "0 ");
    FakeTexture texture;
    startFrame(mtl, {{"diffuse_tex", &texture}, {"diffuse_tex_mult", 0.75f}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              "1 diffuse\ntexture float name\nbitmap_mult 0.750000\n"
              "color_value 0.250000 0.500000 1.000000\n");
}

}  // namespace
