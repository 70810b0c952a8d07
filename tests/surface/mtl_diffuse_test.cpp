#include <cmath>

#include "fake_host/fake_host.h"

namespace {

class MtlDiffuseTest : public FakeHost {
protected:
    MtlDiffuseTest() {
        renderer.gi.light = Color(0.5f);
        renderer.tracedColor = Color(8, 4, 2);
    }

    PelkMaterial& mtl = make("MtlDiffuse");
};

BRDFSampler* frontOf(BSDFSampler* sampler) {
    return sampler->getBRDF(kFrontSide);
}

Color reflectedOf(BSDFSampler* sampler) {
    Color white(1);
    return frontOf(sampler)->getDiffuseColor(white);
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
        float reflection, transparency, lit, mirrored, pooled;
    } cases[] = {
        // With E = (1 - T) R: lit = D (1 - mean E) (1 - T), pooled = D (1 - mean R), D = 0.5.
        {"mirror alone", 0.5f, 0.0f, 0.25f, 0.5f, 0.25f},
        {"filtered", 0.5f, 0.5f, 0.1875f, 0.25f, 0.25f},
        {"more than clear: a ray of no weight", 0.5f, 2.0f, 0.0f, 0.0f, 0.25f},
        {"more than white", 4.0f, 0.5f, 0.0f, 2.0f, 0.0f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Color clear(c.transparency);
        startFrame(mtl, {{"reflection", Color(c.reflection)}, {"transparency", clear}});
        FakeContext context = hit();
        context.directLight = Color(0.25f);
        Color lit;
        context.onLight = [&](BSDFSampler* sampler) { lit = reflectedOf(sampler); };
        mtl.shade(context);
        EXPECT_THAT(lit, ColorNear(Color(c.lit), 1e-6f));
        const Color expected =
            Color(c.lit * 0.5f + 0.25f) + Color(c.mirrored) * renderer.tracedColor;
        EXPECT_THAT(context.resultColor, ColorNear(expected, 1e-5f));
        EXPECT_EQ(context.resultTransparency, clear);
        EXPECT_EQ(context.resultAlphaTransparency, clear);
        EXPECT_EQ(context.resultAlpha, complement(clear));
        EXPECT_EQ(log.count("traceRay"), 1);

        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_THAT(reflectedOf(sampler), ColorNear(Color(c.pooled), 1e-6f))
            << "the sampler leaves transparency out";
        EXPECT_EQ(frontOf(sampler)->getTransparency(context), Color(0));
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, ShadowRaysAndBacksAreAFilterAndChannelsGetTheResult) {
    FakeTexture texture(AColor{Color(1), 1.0f}), noChannel;
    FakeChannel alphaChannel(5);
    startFrame(mtl, {{"diffuse_tex", &texture},
                     {"reflection", Color(0.5f)},
                     {"transparency", Color(0.25f, 0.5f, 3)},
                     {"render_channel_color", &noChannel},
                     {"render_channel_alpha", &alphaChannel}});
    const Color filter(0.25f, 0.5f, 3), opacity(0.75f, 0.5f, 0);
    for (const char* road : {"shadow ray", "back", "front"}) {
        SCOPED_TRACE(road);
        log.clear();
        RecordingFragment fragment;
        FakeContext context = hit();
        context.resultFragment = &fragment;
        context.rayType = *road == 's' ? kRayShadow : kRayCamera;
        context.backSide = *road == 'b';
        mtl.shade(context);
        if (*road != 'f') {
            EXPECT_EQ(resultsOf(context), (Results{Color(0), filter, opacity, filter}));
            EXPECT_EQ(log.calls, (std::vector<std::string>{"setChannel", "setChannel"}));
        }
        // Behind the reflection, and with the index of no channel too.
        EXPECT_EQ(fragment.channels,
                  (std::vector<std::pair<int, Color>>{{-1, context.resultColor}, {5, opacity}}));
    }
}

TEST_F(MtlDiffuseTest, TextureIsBlendedByItsAlphaAndReadWithItsWeight) {
    const Color base(0.5f, 0.25f, 1), tex(0.25f, 0.5f, 0.75f);
    const struct {
        const char* what;
        float mult, alpha;
        bool isRead;
        Color blended;
    } cases[] = {
        {"covers", 1, 1, true, tex},
        {"adds where its alpha is 0 or below", 1, -1, true, base + tex},
        {"alpha is clamped above", 1, 4, true, tex},
        {"the multiplier isn't", 2, 1, true, Color(0, 0.75f, 0.5f)},
        {"at the bound", 1e-12f, 1, true, base},
        {"below the bound", std::nextafter(1e-12f, 0.0f), 1, false, base},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeTexture texture(AColor{tex, c.alpha});
        startFrame(mtl,
                   {{"diffuse", base}, {"diffuse_tex", &texture}, {"diffuse_tex_mult", c.mult}});
        FakeContext context = hit();
        context.rayWeight = Color(0.5f, 1, 2);
        const PelkContext before = context;
        Color shaded;
        context.onLight = [&](BSDFSampler* sampler) { shaded = reflectedOf(sampler); };
        mtl.shade(context);
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_THAT(shaded, ColorNear(c.blended, 1e-6f));
        EXPECT_EQ(reflectedOf(sampler), shaded) << "both ways blend alike";
        EXPECT_EQ(log.count("getTexColor"), c.isRead ? 2 : 0);
        EXPECT_EQ(texture.seenWeight, c.isRead ? before.rayWeight * c.mult : Color(0));
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, ReflectionIsTracedWhereItCounts) {
    const struct {
        const char* what;
        float reflection, weight;
        u32 rayType;
        int depth, reflectiveGi, rays;
    } cases[] = {
        {"on the bound", 1e-3f, 1, kRayCamera, 0, 0, 1},
        {"below the bound", std::nextafter(1e-3f, 0.0f), 1, kRayCamera, 0, 0, 0},
        {"the weight of the ray counts", 0.5f, 1e-4f, kRayCamera, 0, 0, 0},
        {"last depth", 1, 1, kRayCamera, 4, 0, 1},
        {"too deep", 1, 1, kRayCamera, 5, 0, 0},
        {"indirect", 1, 1, kRayCamera | kRayGi, 1, 0, 0},
        {"indirect where mirrors are wanted", 1, 1, kRayCamera | kRayGi, 1, 1, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"reflection", Color(c.reflection, 0, 0)}});
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
    FakeContext context = hit();
    context.rayDir = {0.6f, 0.0f, -0.8f};
    mtl.shade(context);
    const SpawnRequest request = context.spawnRequests.at(0);
    EXPECT_EQ(request.index, 0);
    EXPECT_EQ(request.flags, 0x8002u);
    EXPECT_EQ(request.weight, Color(0.25f));
    EXPECT_THAT(request.direction, VectorNear(Vector(0.6f, 0.0f, 0.8f), 1e-6f));
    const PelkContext ray = renderer.traced.at(0);
    EXPECT_EQ(ray.rayDir, request.direction);
    EXPECT_EQ(ray.rayDir2, request.direction);
    EXPECT_EQ(ray.rayOrigin, ray.spawnOrigin);
    EXPECT_EQ(ray.parentHitLink, context.hitLink);
    EXPECT_EQ(ray.rayMaxT, 999999984306749440.0);
    EXPECT_EQ(ray.rayClipDistance, 1e18f);

    context.spawnsOrphans = true;
    mtl.shade(context);
    EXPECT_EQ(renderer.traced.at(1).rayDir, Vector()) << "the host set up the ray by itself";
    EXPECT_EQ(renderer.traced.at(1).rayClipDistance, 1e18f);
    context.refusesToSpawn = true;
    mtl.shade(context);
    EXPECT_EQ(context.resultAlpha, Color(0.5f)) << "without a ray the rest still stands";
}

TEST_F(MtlDiffuseTest, MirrorFallsBackOnTheGeometryWhereItWouldEnterTheSurface) {
    startFrame(mtl, {{"reflection", Color(1)}});
    const struct {
        Vector normal, r;
    } cases[] = {
        {{-0.6f, 0.0f, 0.8f}, {-0.352f, 0.0f, 0.936f}},  // d - 2 n (n . d), well above the surface
        {{0.6f, 0.0f, 0.8f}, {0.8f, 0.0f, 0.6f}},  // across the ray, which would go straight on
    };
    for (const auto& c : cases) {
        FakeContext context = hit();
        context.rayDir = {0.8f, 0.0f, -0.6f};
        context.normal = c.normal;
        mtl.shade(context);
        EXPECT_THAT(context.spawnRequests.at(0).direction, VectorNear(c.r, 1e-6f));
    }
}

TEST_F(MtlDiffuseTest, SamplerOffersItsMirrorUnlessAskedNotTo) {
    const struct {
        float reflection;
        int doDiffuse;
        bool offers;
    } cases[] = {{0.5f, 1, true}, {1, 2, false}, {0, 1, false}, {9e-11f, 1, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reflection);
        startFrame(mtl, {{"reflection", Color(c.reflection)}, {"transparency", Color(0.5f)}});
        FakeContext context = hit();
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        int index = 0;
        PelkContext* ray = frontOf(sampler)->getNewContext(context, index, c.doDiffuse);
        ASSERT_EQ(ray != nullptr, c.offers);
        if (ray) {
            const SpawnRequest request = context.spawnRequests.at(0);
            EXPECT_EQ(request.index, 1);
            EXPECT_EQ(request.weight, Color(c.reflection));
            EXPECT_EQ(request.flags, 0x8002u);
            EXPECT_EQ(request.direction, -context.rayDir);
            ray->releaseContext();
        }
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, SetupMirrorsTheRayAndItsDerivatives) {
    startFrame(mtl, {{"reflection", Color(1)}});
    FakeContext context = hit();
    context.rayDir = {0.6f, 0.0f, -0.8f};
    BSDFSampler* sampler = mtl.getBSDF(context, 0);
    PelkContext ray;
    EXPECT_EQ(frontOf(sampler)->setupContext(context, ray, 0.0f, 0), 1.0f);
    EXPECT_THAT(ray.rayDir, VectorNear(Vector(0.6f, 0.0f, 0.8f), 1e-6f));
    EXPECT_EQ(ray.rayDir2, ray.rayDir);
    EXPECT_EQ(ray.rayOrigin, context.hitPoint);
    EXPECT_EQ(ray.rayMaxT, 999999984306749440.0);
    // r - d is along z, so that z alone changes its sign.
    EXPECT_THAT(ray.rayDerivX, VectorNear(Vector(0.5f, 0.0f, 0.0f), 1e-6f));
    EXPECT_THAT(ray.rayDerivY, VectorNear(Vector(0.0f, 0.5f, -0.25f), 1e-6f));

    // A ray in the plane of the surface isn't turned: the axis between has no length.
    context.rayDir = {1.0f, 0.0f, 0.0f};
    frontOf(sampler)->setupContext(context, ray, 0.0f, 0);
    EXPECT_EQ(ray.rayDir, context.rayDir);
    EXPECT_EQ(ray.rayDerivY, context.rayDerivY);
    mtl.releaseBSDF(context, sampler);
}

TEST_F(MtlDiffuseTest, EvalWeightsTheLightAndTakesItAll) {
    const Vector up(0, 0, 1), slanted(0.6f, 0, 0.8f), level(1, 0, 0);
    const struct {
        const char* what;
        Vector direction;
        float prob;
        int flags, mis;
        float share;
    } cases[] = {
        {"the cosine", slanted, 2, 7, 0, 0.8f},
        {"from below", -up, 2, 1, 0, 0},
        {"shared: 0.8 * 16 / (1.6^2 + 16)", slanted, 4, 1, 1, 0.8f * 16.0f / 18.56f},
        {"a light without extent", up, 1e18f, 1, 1, 1},
        {"nothing to share", level, 0, 1, 1, 0},
        {"diffuse light not wanted", up, 2, 2, 0, 0},
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
    EXPECT_EQ(resultsOf(context), kOpaqueBlack);
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
    FakeTexture texture;
    const std::string colour = "color_value 0.250000 0.500000 1.000000\n";
    startFrame(mtl, {{"diffuse", Color(0.25f, 0.5f, 1)}, {"reflection", Color(1)}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "1 diffuse\n" + colour);
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "0 ");
    startFrame(mtl, {{"diffuse_tex", &texture}, {"diffuse_tex_mult", 0.75f}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              "1 diffuse\ntexture float name\nbitmap_mult 0.750000\n" + colour);
}

}  // namespace
