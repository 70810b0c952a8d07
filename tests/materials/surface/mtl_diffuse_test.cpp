#include <algorithm>
#include <cmath>

#include "fake_host/dice.h"
#include "fake_host/fake_host.h"

namespace {

/// Random parameters and hits, and what the material must answer for them by its formulas.
class MtlDiffuseTest : public OneHit {
protected:
    void roll() {
        diffuse = dice.color(1);
        transparency = dice.of({Color(0), dice.color(1), dice.color(2)});
        // Two at the bound below which no ray is traced, by the weight of the ray.
        reflection = dice.of({Color(0), Color(0, 2e-3f, 0), Color(0, std::nextafter(2e-3f, 0), 0),
                              dice.color(1), dice.color(3)});
        texture.color = {dice.color(1), dice.between(-1, 2)};
        texture.seenWeight = Color(0);
        strength = dice.of({1e-12f, std::nextafter(1e-12f, 0.0f), dice.between(0, 2)});
        PluginBase* const tex = dice.below(3) ? &texture : nullptr;
        setParams(mtl, {{"diffuse", diffuse}, {"reflection", reflection}, {"diffuse_tex", tex}});
        startFrame(mtl, {{"transparency", transparency}, {"diffuse_tex_mult", strength}});
        if (!tex || strength < 1e-12f)
            strength = 0;
        renderer.gi.light = dice.color(1);
        renderer.gi.mis = dice.coin();
        renderer.tracedColor = dice.color(8);
        renderer.sequenceData.reflectiveGi = dice.coin();
        context.directLight = dice.color(1);
        context.rayWeight = Color(0.5f);
        context.rayType = dice.of<u32>({kRayCamera, kRayShadow, kRayCamera | kRayGi});
        context.backSide = dice.below(4) == 0;
        context.traceDepth = dice.of({0, 4, 5});
        context.rayDir = dice.direction();
        context.normal = context.geomNormal = dice.direction();
        context.refusesToSpawn = dice.below(8) == 0;
        context.spawnRequests.clear();
        renderer.traced.clear();
    }

    /// The colour below the mirror of that reflectance.
    Color lambertBelow(Color mirror) const {
        const float cover = std::clamp(texture.color.alpha, 0.0f, 1.0f) * strength;
        return (diffuse * (1 - cover) + texture.color.color * strength) *
               std::max(0.0f, 1 - (mirror.r + mirror.g + mirror.b) / 3);
    }

    PelkMaterial& mtl = make("MtlDiffuse");
    Dice dice;
    Color diffuse, reflection, transparency;
    float strength = 0;  ///< of the texture, 0 where it isn't read
};

TEST_F(MtlDiffuseTest, ShadesAsItsFormulaSays) {
    FakeTexture noChannel;
    FakeChannel alphaChannel(5);
    setParams(mtl, {{"render_channel_color", &noChannel}, {"render_channel_alpha", &alphaChannel}});
    int numTraced = 0;
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        roll();
        fragment.channels.clear();
        context.resultFragment = &fragment;
        const PelkContext before = context;
        mtl.shade(context);
        expectRayAndHitAsBefore(before, context);
        const Color opacity = complement(transparency), mirror = opacity * reflection;
        const bool isFilter = context.rayType == kRayShadow || context.backSide;
        const bool mirrorsHere = context.traceDepth < 5 &&
                                 (context.rayType == kRayCamera ||
                                  (context.rayType & kRayGi && renderer.sequenceData.reflectiveGi));
        const bool traces =
            !isFilter && mirrorsHere && length({reflection.r, reflection.g, reflection.b}) >= 2e-3f;
        Color expected;
        if (!isFilter)
            expected = lambertBelow(mirror) * opacity * renderer.gi.light + context.directLight;
        if (traces && !context.refusesToSpawn)
            expected += mirror * renderer.tracedColor;
        EXPECT_THAT(context.resultColor, ColorNear(expected, 1e-5f));
        EXPECT_EQ(resultsOf(context),
                  (Results{context.resultColor, transparency, opacity, transparency}));
        // Behind the reflection, and with the index of no channel too.
        EXPECT_EQ(fragment.channels,
                  (std::vector<std::pair<int, Color>>{{-1, context.resultColor}, {5, opacity}}));
        EXPECT_EQ(texture.seenWeight, isFilter ? Color(0) : Color(0.5f) * strength);

        ASSERT_EQ(context.spawnRequests.size(), traces);
        for (const PelkContext& ray : renderer.traced) {
            EXPECT_EQ(context.spawnRequests[0].flags, 0x8002u);
            EXPECT_EQ(context.spawnRequests[0].weight, mirror);
            EXPECT_EQ(context.spawnRequests[0].direction, ray.rayDir);
            EXPECT_THAT(ray.rayDir, VectorNear(mirrored(context.rayDir, context.normal), 1e-6f));
            EXPECT_EQ(ray.rayDir2, ray.rayDir);
            EXPECT_EQ(ray.rayOrigin, ray.spawnOrigin);
            EXPECT_EQ(ray.parentHitLink, context.hitLink);
            EXPECT_EQ(ray.rayMaxT, 999999984306749440.0);
            EXPECT_EQ(ray.rayClipDistance, 1e18f);
            ++numTraced;
        }
    }
    EXPECT_GT(numTraced, 200);
}

TEST_F(MtlDiffuseTest, SamplerIsOpaqueAndMirrorsWhatItDoesNotScatter) {
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        roll();
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        ASSERT_EQ(sampler->getBRDF(kBackSide), nullptr);
        BRDFSampler& front = *sampler->getBRDF(kFrontSide);
        const Color own = lambertBelow(reflection);
        Color light(2, 4, 8), unshadowed(9);
        EXPECT_THAT(front.getDiffuseColor(light), ColorNear(own * Color(2, 4, 8), 1e-5f));
        EXPECT_EQ(light, Color(0)) << "nothing is left for layers below";
        EXPECT_EQ(front.getTransparency(context), Color(0)) << "shade alone has it";
        const int doDiffuse = dice.below(2);
        front.traceForward(context, doDiffuse);
        EXPECT_THAT(context.resultColor,
                    ColorNear(own * renderer.gi.light * static_cast<float>(doDiffuse), 1e-5f));
        EXPECT_EQ(context.resultAlpha, Color(1));

        const Vector toLight = dice.of({dice.direction(), cross(context.normal, {0.6f, 0, 0.8f})});
        const float density = dice.of({0.0f, 1e18f, dice.between(0, 4)});
        const int flags = dice.below(4);
        const float cosine = std::max(0.0f, dotDouble(context.normal, toLight));
        const float squared = density * density, sum = 4 * cosine * cosine + squared;
        const float share = !renderer.gi.mis ? 1 : sum > 0 ? squared / sum : 0;
        light = Color(2, 4, 8);
        const Color seen = front.eval(context, toLight, light, unshadowed, density, flags);
        const float scale = flags & kEvalDiffuse ? cosine * share : 0;
        EXPECT_THAT(seen, ColorNear(own * Color(2, 4, 8) * scale, 1e-5f));
        EXPECT_EQ(light, Color(0));
        EXPECT_EQ(unshadowed, Color(0));

        int index = 0;
        EXPECT_EQ(front.getNewContext(context, index, 2), nullptr);
        if (PelkContext* const ray = front.getNewContext(context, index, 1)) {
            EXPECT_EQ(context.spawnRequests[0].index, 1);
            EXPECT_EQ(context.spawnRequests[0].flags, 0x8002u);
            EXPECT_EQ(context.spawnRequests[0].weight, reflection);
            EXPECT_EQ(front.setupContext(context, *ray, 0, 0), 1);
            EXPECT_THAT(ray->rayDir, VectorNear(mirrored(context.rayDir, context.normal), 1e-6f));
            EXPECT_THAT(ray->rayDerivY,
                        VectorNear(mirrored(context.rayDerivY, context.normal), 1e-4f));
            ray->releaseContext();
        } else {
            EXPECT_TRUE(context.refusesToSpawn || reflection == Color(0));
        }
        mtl.releaseBSDF(context, sampler);
    }
}

}  // namespace
