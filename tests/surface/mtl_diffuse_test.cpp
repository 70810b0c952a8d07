#include <cmath>

#include "fake_host/fake_host.h"

namespace {

class MtlDiffuseTest : public FakeHost {
protected:
    MtlDiffuseTest() {
        renderer.gi.light = Color(0.5f);
        renderer.tracedColor = Color(8, 4, 2);
    }

    // The front of the sampler at a hit; the sampler goes back with it.
    std::shared_ptr<BRDFSampler> frontAt(PelkContext& context) {
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        return {sampler->getBRDF(kFrontSide),
                [&, sampler](BRDFSampler*) { mtl.releaseBSDF(context, sampler); }};
    }

    PelkMaterial& mtl = make("MtlDiffuse");
};

Color reflectedOf(BSDFSampler* sampler) {
    Color white(1);
    return sampler->getBRDF(kFrontSide)->getDiffuseColor(white);
}

TEST_F(MtlDiffuseTest, TransparencyAndReflectionShareTheLight) {
    const struct {
        const char* what;
        float reflection, transparency, lit, mirrored, pooled;
    } cases[] = {
        // With E = (1 - T) R: lit = D (1 - mean E) (1 - T), pooled = D (1 - mean R), D = 0.5.
        {"neither: no ray", 0.0f, 0.0f, 0.5f, 0.0f, 0.5f},
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
        context.directLight = Color(0.125f, 0.25f, 0.5f);
        Color lit;
        context.onLight = [&](BSDFSampler* sampler) { lit = reflectedOf(sampler); };
        mtl.shade(context);
        EXPECT_THAT(lit, ColorNear(Color(c.lit), 1e-6f));
        const Color expected =
            Color(c.lit * 0.5f) + context.directLight + Color(c.mirrored) * renderer.tracedColor;
        EXPECT_THAT(context.resultColor, ColorNear(expected, 1e-5f));
        EXPECT_EQ(resultsOf(context),
                  (Results{context.resultColor, clear, complement(clear), clear}));
        EXPECT_EQ(log.count("traceRay"), c.reflection > 0.0f);

        Color white(1);
        EXPECT_THAT(frontAt(context)->getDiffuseColor(white), ColorNear(Color(c.pooled), 1e-6f));
        EXPECT_EQ(frontAt(context)->getTransparency(context), Color(0)) << "shade alone has it";
    }
}

TEST_F(MtlDiffuseTest, ShadowRaysAndBacksAreAFilterAndChannelsGetTheResult) {
    FakeTexture noChannel;
    FakeChannel alphaChannel(5);
    const Color filter(0.25f, 0.5f, 3), opacity(0.75f, 0.5f, 0);
    startFrame(mtl, {{"reflection", Color(0.5f)},
                     {"transparency", filter},
                     {"render_channel_color", &noChannel},
                     {"render_channel_alpha", &alphaChannel}});
    const auto shadeOn = [&](const char* road, u32 rayType, int backSide, bool isFilter) {
        SCOPED_TRACE(road);
        log.clear();
        RecordingFragment fragment;
        FakeContext context = hit();
        context.resultFragment = &fragment;
        context.rayType = rayType;
        context.backSide = backSide;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context) == (Results{Color(0), filter, opacity, filter}), isFilter);
        EXPECT_EQ(log.has("computeDirectLighting"), !isFilter);
        // Behind the reflection, and with the index of no channel too.
        EXPECT_EQ(fragment.channels,
                  (std::vector<std::pair<int, Color>>{{-1, context.resultColor}, {5, opacity}}));
    };
    shadeOn("shadow ray", kRayShadow, 0, true);
    shadeOn("back", kRayCamera, 1, true);
    shadeOn("front", kRayCamera, 0, false);
}

TEST_F(MtlDiffuseTest, TextureIsBlendedByItsAlphaAndReadWithItsWeight) {
    const Color base(0.5f, 0.25f, 1), tex(0.25f, 0.5f, 0.75f), weight(0.5f, 1, 2);
    const auto expectBlend = [&](const char* what, float mult, float alpha, Color blended) {
        SCOPED_TRACE(what);
        FakeTexture texture(AColor{tex, alpha});
        startFrame(mtl, {{"diffuse", base}, {"diffuse_tex", &texture}, {"diffuse_tex_mult", mult}});
        FakeContext context = hit();
        context.rayWeight = weight;
        const PelkContext before = context;
        Color shaded, white(1);
        context.onLight = [&](BSDFSampler* sampler) { shaded = reflectedOf(sampler); };
        mtl.shade(context);
        EXPECT_THAT(shaded, ColorNear(blended, 1e-6f));
        EXPECT_EQ(frontAt(context)->getDiffuseColor(white), shaded) << "both ways blend alike";
        EXPECT_EQ(texture.seenWeight, mult < 1e-12f ? Color(0) : weight * mult);
        expectRayAndHitAsBefore(before, context);
    };
    expectBlend("adds where its alpha is 0 or below", 1, -1, base + tex);
    expectBlend("alpha is clamped above", 1, 4, tex);
    expectBlend("the multiplier isn't", 2, 1, Color(0, 0.75f, 0.5f));
    expectBlend("read at the bound", 1e-12f, 1, base);
    expectBlend("not read below it", std::nextafter(1e-12f, 0.0f), 1, base);
}

TEST_F(MtlDiffuseTest, ReflectionIsTracedWhereItCounts) {
    const auto rays = [&](float reflection, u32 rayType, int depth, int reflectiveGi) {
        startFrame(mtl, {{"reflection", Color(reflection, 0, 0)}});
        renderer.sequenceData.reflectiveGi = reflectiveGi;
        FakeContext context = hit();
        context.rayWeight = Color(0.5f);
        context.rayType = rayType;
        context.traceDepth = depth;
        mtl.shade(context);
        return log.count("traceRay");
    };
    EXPECT_EQ(rays(2e-3f, kRayCamera, 0, 0), 1) << "on the bound, by the weight of the ray";
    EXPECT_EQ(rays(std::nextafter(2e-3f, 0.0f), kRayCamera, 0, 0), 0) << "below the bound";
    EXPECT_EQ(rays(1, kRayCamera, 4, 0), 1) << "last depth";
    EXPECT_EQ(rays(1, kRayCamera, 5, 0), 0) << "too deep";
    EXPECT_EQ(rays(1, kRayCamera | kRayGi, 1, 0), 0) << "indirect";
    EXPECT_EQ(rays(1, kRayCamera | kRayGi, 1, 1), 1) << "indirect where mirrors are wanted";
}

TEST_F(MtlDiffuseTest, MirrorRayLeavesAsTheHostLinksIt) {
    startFrame(mtl, {{"reflection", Color(0.5f)}, {"transparency", Color(0.5f)}});
    FakeContext context = hit();
    context.rayDir = {0.6f, 0.0f, -0.8f};
    mtl.shade(context);
    const SpawnRequest request = context.spawnRequests.at(0);
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
    context.refusesToSpawn = true;
    mtl.shade(context);
    EXPECT_EQ(context.resultAlpha, Color(0.5f)) << "without a ray the rest still stands";
}

TEST_F(MtlDiffuseTest, MirrorFallsBackOnTheGeometryWhereItWouldEnterTheSurface) {
    startFrame(mtl, {{"reflection", Color(1)}});
    const auto mirrored = [&](Vector normal) {
        FakeContext context = hit();
        context.rayDir = {0.8f, 0.0f, -0.6f};
        context.normal = normal;
        mtl.shade(context);
        return context.spawnRequests.at(0).direction;
    };
    // d - 2 n (n . d), well above the surface.
    EXPECT_THAT(mirrored({-0.6f, 0, 0.8f}), VectorNear(Vector(-0.352f, 0, 0.936f), 1e-6f));
    // Across the ray, which would go straight on.
    EXPECT_THAT(mirrored({0.6f, 0, 0.8f}), VectorNear(Vector(0.8f, 0, 0.6f), 1e-6f));
}

TEST_F(MtlDiffuseTest, SamplerOffersItsMirrorUnlessAskedNotTo) {
    const auto offered = [&](float reflection, int doDiffuse) {
        startFrame(mtl, {{"reflection", Color(reflection)}, {"transparency", Color(0.5f)}});
        FakeContext context = hit();
        int index = 0;
        if (PelkContext* ray = frontAt(context)->getNewContext(context, index, doDiffuse)) {
            ray->releaseContext();
            const SpawnRequest request = context.spawnRequests.at(0);
            EXPECT_EQ(request.index, 1);
            EXPECT_EQ(request.flags, 0x8002u);
            EXPECT_EQ(request.direction, -context.rayDir);
            return request.weight;
        }
        return Color(0);
    };
    EXPECT_EQ(offered(0.5f, 1), Color(0.5f));
    EXPECT_EQ(offered(0.5f, 2), Color(0));
    EXPECT_EQ(offered(9e-11f, 1), Color(0)) << "too weak";
}

TEST_F(MtlDiffuseTest, SetupMirrorsTheRayAndItsDerivatives) {
    startFrame(mtl, {{"reflection", Color(1)}});
    FakeContext context = hit();
    context.rayDir = {0.6f, 0.0f, -0.8f};
    PelkContext ray;
    EXPECT_EQ(frontAt(context)->setupContext(context, ray, 0.0f, 0), 1.0f);
    EXPECT_THAT(ray.rayDir, VectorNear(Vector(0.6f, 0.0f, 0.8f), 1e-6f));
    // r - d is along z, so that z alone changes its sign.
    EXPECT_THAT(ray.rayDerivX, VectorNear(Vector(0.5f, 0.0f, 0.0f), 1e-6f));
    EXPECT_THAT(ray.rayDerivY, VectorNear(Vector(0.0f, 0.5f, -0.25f), 1e-6f));
    // A ray in the plane of the surface isn't turned: the axis between has no length.
    context.rayDir = {1.0f, 0.0f, 0.0f};
    frontAt(context)->setupContext(context, ray, 0.0f, 0);
    EXPECT_EQ(ray.rayDerivY, context.rayDerivY);
}

TEST_F(MtlDiffuseTest, EvalWeightsTheLightAndTakesItAll) {
    // The share of the light that is reflected, by a colour of 0.5.
    const auto share = [&](Vector direction, float prob, int flags, int mis) {
        renderer.gi.mis = mis;
        startFrame(mtl);
        FakeContext context = hit();
        Color shadowed(2, 4, 8), unshadowed(9);
        const Color seen =
            frontAt(context)->eval(context, direction, shadowed, unshadowed, prob, flags);
        EXPECT_EQ(shadowed, Color(0));
        EXPECT_EQ(unshadowed, Color(0));
        EXPECT_EQ(seen, Color(1, 2, 4) * seen.r);
        return seen.r;
    };
    const Vector up(0, 0, 1), slanted(0.6f, 0, 0.8f), level(1, 0, 0);
    EXPECT_EQ(share(-up, 2, 1, 0), 0) << "from below";
    EXPECT_FLOAT_EQ(share(slanted, 4, 1, 1), 0.8f * 16 / (1.6f * 1.6f + 16)) << "shared";
    EXPECT_EQ(share(up, 1e18f, 1, 1), 1) << "a light without extent";
    EXPECT_EQ(share(level, 0, 1, 1), 0) << "nothing to share";
    EXPECT_FLOAT_EQ(share(slanted, 2, 7, 0), 0.8f) << "the cosine alone, as nothing is shared now";
    EXPECT_EQ(share(up, 2, 2, 0), 0) << "diffuse light not wanted";
}

TEST_F(MtlDiffuseTest, SamplerTracesItsIndirectLightAndLetsNothingThrough) {
    startFrame(mtl, {{"transparency", Color(0.5f)}});
    FakeContext context = hit();
    const auto front = frontAt(context);
    front->traceForward(context, 1);
    EXPECT_EQ(resultsOf(context), (Results{Color(0.25f), Color(0), Color(1), Color(0)}));
    front->traceForward(context, 0);
    EXPECT_EQ(resultsOf(context), kOpaqueBlack);
    Color light(1, 2, 4);
    EXPECT_EQ(front->getLightMult(light), Color(0.5f, 1, 2));
    EXPECT_EQ(light, Color(0)) << "nothing is left for layers below";
}

TEST_F(MtlDiffuseTest, SamplersAreReusedAndGoneOutsideARender) {
    FakeContext context = hit();
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr) << "before a render";
    mtl.releaseBSDF(context, nullptr);
    for (const float reflection : {0.75f, 0.0f}) {
        startFrame(mtl, {{"reflection", Color(reflection)}});
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(sampler->getBRDF(kBackSide), nullptr);
        EXPECT_EQ(reflectedOf(sampler), Color(0.5f * (1 - reflection))) << "of the last frame";
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDiffuseTest, DescriptorTextHoldsColourAndTexture) {
    FakeTexture texture;
    startFrame(mtl, {{"diffuse", Color(0.25f, 0.5f, 1)},
                     {"diffuse_tex", &texture},
                     {"diffuse_tex_mult", 0.75f}});
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"),
              "1 diffuse\ntexture float name\nbitmap_mult 0.750000\n"
              "color_value 0.250000 0.500000 1.000000\n");
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "0 ");
}

}  // namespace
