#include <cmath>

#include "fake_host/fake_host.h"

namespace {

class MtlDiffuseTest : public FakeHost {
protected:
    MtlDiffuseTest() {
        renderer.gi.light = Color(0.5f);
        renderer.tracedColor = Color(8, 4, 2);
        context.directLight = Color(0.125f, 0.25f, 0.5f);
    }

    // The front of the sampler at the hit; the sampler goes back with it.
    std::shared_ptr<BRDFSampler> front() {
        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        return {sampler->getBRDF(kFrontSide),
                [=, this](BRDFSampler*) { mtl.releaseBSDF(context, sampler); }};
    }

    PelkMaterial& mtl = make("MtlDiffuse");
    FakeContext context = hit();
};

TEST_F(MtlDiffuseTest, TransparencyAndReflectionShareTheLight) {
    const struct {
        const char* what;
        float reflection, transparency, lit, mirrored, pooled;
    } cases[] = {
        // With E = (1 - T) R: lit = D (1 - mean E) (1 - T), pooled = D (1 - mean R), D = 0.5.
        {"neither: no ray", 0.0f, 0.0f, 0.5f, 0.0f, 0.5f},
        {"filtered", 0.5f, 0.5f, 0.1875f, 0.25f, 0.25f},
        {"more than clear: a ray of no weight", 0.5f, 2.0f, 0.0f, 0.0f, 0.25f},
        {"more than white", 4.0f, 0.5f, 0.0f, 2.0f, 0.0f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Color clear(c.transparency);
        startFrame(mtl, {{"reflection", Color(c.reflection)}, {"transparency", clear}});
        mtl.shade(context);
        const Color expected =
            Color(c.lit * 0.5f) + context.directLight + Color(c.mirrored) * renderer.tracedColor;
        EXPECT_THAT(context.resultColor, ColorNear(expected, 1e-5f));
        EXPECT_EQ(resultsOf(context),
                  (Results{context.resultColor, clear, complement(clear), clear}));
        EXPECT_EQ(log.count("traceRay"), c.reflection > 0.0f);

        const auto pooled = front();
        Color white(1);
        EXPECT_THAT(pooled->getDiffuseColor(white), ColorNear(Color(c.pooled), 1e-6f));
        EXPECT_EQ(white, Color(0)) << "nothing is left for layers below";
        EXPECT_EQ(pooled->getTransparency(context), Color(0)) << "shade alone has it";
        pooled->traceForward(context, 1);
        EXPECT_EQ(resultsOf(context),
                  (Results{Color(c.pooled * 0.5f), Color(0), Color(1), Color(0)}));
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
    for (const auto& [rayType, backSide] :
         {std::pair(kRayShadow, 0), {kRayCamera, 1}, {kRayCamera, 0}}) {
        RecordingFragment fragment;
        context.resultFragment = &fragment;
        context.rayType = rayType;
        context.backSide = backSide;
        mtl.shade(context);
        const bool isFilter = rayType == kRayShadow || backSide;
        EXPECT_EQ(resultsOf(context) == (Results{Color(0), filter, opacity, filter}), isFilter);
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
        Color blended;
    } cases[] = {
        {"adds where its alpha is 0 or below", 1, -1, base + tex},
        {"alpha is clamped above", 1, 4, tex},
        {"the multiplier isn't", 2, 1, Color(0, 0.75f, 0.5f)},
        {"not read below the bound", std::nextafter(1e-12f, 0.0f), 1, base},
    };
    context.rayWeight = Color(0.5f, 1, 2);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FakeTexture texture(AColor{tex, c.alpha});
        startFrame(mtl,
                   {{"diffuse", base}, {"diffuse_tex", &texture}, {"diffuse_tex_mult", c.mult}});
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_THAT(context.resultColor, ColorNear(c.blended * 0.5f + context.directLight, 1e-6f));
        Color white(1);
        EXPECT_THAT(front()->getDiffuseColor(white), ColorNear(c.blended, 1e-6f));
        EXPECT_EQ(texture.seenWeight, c.mult < 1e-12f ? Color(0) : context.rayWeight * c.mult);
        expectRayAndHitAsBefore(before, context);
    }
}

TEST_F(MtlDiffuseTest, ReflectionIsTracedWhereItCounts) {
    const auto rays = [&](float reflection, u32 rayType, int depth, int reflectiveGi) {
        startFrame(mtl, {{"reflection", Color(reflection, 0, 0)}});
        renderer.sequenceData.reflectiveGi = reflectiveGi;
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

TEST_F(MtlDiffuseTest, MirrorRaysLeaveAsTheHostLinksThem) {
    startFrame(mtl, {{"reflection", Color(0.5f)}, {"transparency", Color(0.5f)}});
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
    context.refusesToSpawn = true;
    mtl.shade(context);
    EXPECT_EQ(context.resultAlpha, Color(0.5f)) << "without a ray the rest still stands";
}

TEST_F(MtlDiffuseTest, SamplerOffersItsMirrorRay) {
    startFrame(mtl, {{"reflection", Color(0.5f)}, {"transparency", Color(0.5f)}});
    context.rayDir = {0.6f, 0.0f, -0.8f};
    int index = 0;
    EXPECT_EQ(front()->getNewContext(context, index, 2), nullptr);
    PelkContext* ray = front()->getNewContext(context, index, 1);
    const SpawnRequest request = context.spawnRequests.at(0);
    EXPECT_EQ(request.index, 1);
    EXPECT_EQ(request.flags, 0x8002u);
    EXPECT_EQ(request.weight, Color(0.5f));
    EXPECT_EQ(request.direction, -context.rayDir);
    EXPECT_EQ(front()->setupContext(context, *ray, 0.0f, 0), 1.0f);
    EXPECT_THAT(ray->rayDir, VectorNear(Vector(0.6f, 0.0f, 0.8f), 1e-6f));
    // r - d is along z, so that z alone changes its sign.
    EXPECT_THAT(ray->rayDerivY, VectorNear(Vector(0.0f, 0.5f, -0.25f), 1e-6f));
    ray->releaseContext();
}

TEST_F(MtlDiffuseTest, EvalWeightsTheLightAndTakesItAll) {
    // The share of the light that is reflected, by a colour of 0.5.
    const auto share = [&](Vector direction, float prob, int flags, int mis) {
        renderer.gi.mis = mis;
        startFrame(mtl);
        Color shadowed(2, 4, 8), unshadowed(9);
        const Color seen = front()->eval(context, direction, shadowed, unshadowed, prob, flags);
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

}  // namespace
