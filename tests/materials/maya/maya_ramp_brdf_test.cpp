#include "materials/maya/ramp_fixture.h"

namespace {

using Value = RampReference::Value;

double limit(double x) {
    return std::clamp(x, 0.0, 1.0);
}

double dotOf(Vector a, Vector b) {
    return static_cast<double>(a.x) * b.x + static_cast<double>(a.y) * b.y +
           static_cast<double>(a.z) * b.z;
}

Vector mirror(Vector v, Vector n) {
    return v - n * static_cast<float>(2 * dotOf(v, n));
}

Value scaled(Value v, double s) {
    return {v.r * s, v.g * s, v.b * s, v.a};
}

Value product(Value a, Value b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b, a.a};
}

Value sum(Value a, Value b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b, a.a};
}

Value valueOf(Color c) {
    return {c.r, c.g, c.b, 1};
}

Value opacity(Value t) {
    return {1 - limit(t.r), 1 - limit(t.g), 1 - limit(t.b), 1};
}

void expectNear(Color color, Value expected, double tolerance, const std::string& what) {
    const double scale = 1 + std::abs(expected.r) + std::abs(expected.g) + std::abs(expected.b);
    EXPECT_NEAR(color.r, expected.r, tolerance * scale) << what;
    EXPECT_NEAR(color.g, expected.g, tolerance * scale) << what;
    EXPECT_NEAR(color.b, expected.b, tolerance * scale) << what;
}

/// Random ramps and hits, and what the material must answer, in double precision and by other ways
/// where there are some: angles instead of root formulas, Blinn's minimum instead of its cases.
class MayaRampBRDFTest : public RampFixture {
protected:
    /// Sets everything to random values and starts a frame.
    void roll(Dice& dice, int input) {
        for (auto& [name, reference] : ramps) {
            const std::vector<RampPoint> points = dice.ramp();
            reference = RampReference(points);
            setRamp(name, points);
        }
        diffuse = dice.between(0.2f, 1);
        eccentricity = dice.between(0.05f, 1);
        specularity = dice.between(0.1f, 1);
        ambient = {dice.color(0, 1), dice.between(0, 1)};
        ambientTex.color = ambient;
        startFrame(mtl, {{"color_input", input},
                         {"diffuse_tex", diffuse},
                         {"fscatter_tex", 0.25f},
                         {"eccentricity_tex", eccentricity},
                         {"specularity_tex", specularity},
                         {"ambient_tex", &ambientTex},
                         {"refractions", true},
                         {"reflection_limit", dice.below(3)},
                         {"refraction_limit", dice.below(3)},
                         {"ior", ior = dice.between(1.05f, 2)}});
        weight = diffuse - 0.25 * diffuse;
    }

    /// A hit from any side, not too near the silhouette.
    void rollHit(Dice& dice) {
        do {
            context.normal = dice.direction();
            context.rayDir = dice.direction();
        } while (std::abs(dotOf(context.normal, context.rayDir)) < 0.1);
        context.geomNormal = context.normal;
        context.backSide = dotOf(context.normal, context.rayDir) > 0;
        context.flippedSide = 0;
        context.traceDepth = 1;
    }

    /// Cosine to the viewer, of the normal as it stands.
    double facing() const { return limit(-dotOf(context.normal, context.rayDir)); }

    double colorPosition(Vector toLight, Color light, int input) const {
        const double cosine = std::clamp(dotOf(context.normal, toLight), -1.0, 1.0);
        const double mean = (static_cast<double>(light.r) + light.g + light.b) / 3;
        switch (input) {
            case 0:
                return (1 - std::acos(cosine) / 3.14159265358979) * 1.1;
            case 1:
                return facing();
            case 2:
                return std::max(0.0, cosine) * mean;
            case 3:
                return std::max(0.0, cosine);
            default:
                return input == 4 ? 1 : 0;
        }
    }

    Value diffuseOf(Vector toLight, Color light, int input, Value transparency) {
        if (input == 2 || input == 3)
            return {};
        const double mean = (static_cast<double>(light.r) + light.g + light.b) / 3;
        const Value color = scaled(
            product(opacity(transparency), ramps["color"].at(colorPosition(toLight, light, input))),
            weight);
        return scaled(product(valueOf(light), color), limit(dotOf(context.normal, toLight)) * mean);
    }

    Value specularOf(Vector toLight, Color light) {
        const Vector n = context.normal, toViewer = -context.rayDir;
        const Vector half = normalizeGuarded(toLight + toViewer);
        // The frame is that of the viewer's side.
        const double nh = dotOf(context.backSide ? -n : n, half), vh = dotOf(half, toViewer);
        if (nh <= 1e-6 || vh <= 1e-6)
            return {};
        const double nv = dotOf(n, toViewer), nl = dotOf(n, toLight);
        const double e = static_cast<double>(eccentricity) * eccentricity;
        const double d = std::pow(e / (nh * nh * (e - 1) + 1), 2);
        const double g = std::min({1.0, 2 * nh * nv / vh, 2 * nh * nl / vh}) / nv;
        const double f0 = ramps["specularRollOff"].at(std::min(1.0, nv)).r;
        const double f = limit(f0 + (1 - f0) * std::pow(1 - vh, 5));
        const double place = std::min(1.0, dotOf(context.rayDir, mirror(toLight, n)));
        return scaled(product(ramps["specular"].at(place), valueOf(light)),
                      d * g * f * specularity);
    }

    /// What the traced rays of the hit add, if all of them see `renderer.tracedColor`.
    double tracedShare(double reflectivity) {
        const bool refracts = context.traceDepth < limits[1];
        bool reflects = context.traceDepth < limits[0];
        double share = 1, traced = 0;
        if (refracts) {
            const double cosIn = std::abs(dotOf(context.normal, context.rayDir));
            const double eta = dotOf(context.normal, context.rayDir) < 0 ? 1.0 / ior : ior;
            const double sinOut = std::sqrt(1 - cosIn * cosIn) * eta;
            if (sinOut >= 1) {
                reflects = true;
            } else {
                // Fresnel by the sine and tangent laws.
                const double in = std::acos(cosIn), out = std::asin(sinOut);
                share = (std::pow(std::sin(in - out) / std::sin(in + out), 2) +
                         std::pow(std::tan(in - out) / std::tan(in + out), 2)) /
                        2;
                traced += (1 - share) * reflectivity;
            }
        }
        return traced + (reflects ? share * reflectivity : 0);
    }

    std::map<std::string, RampReference> ramps = {
        {"color", RampReference()},       {"transp", RampReference()},
        {"incan", RampReference()},       {"specular", RampReference()},
        {"environm", RampReference()},    {"specularRollOff", RampReference()},
        {"reflectivity", RampReference()}};
    float diffuse = 1, eccentricity = 0.5f, specularity = 1, ior = 1.5f;
    double weight = 1;
    AColor ambient;
    FakeTexture ambientTex;
    int limits[2] = {};  // of reflections and refractions
};

TEST_F(MayaRampBRDFTest, EvaluatesLightAsTheFormulasSay) {
    Dice dice;
    int bright = 0, shining = 0;
    for (int round = 0; round < 2000; ++round) {
        const int input = dice.below(6);
        roll(dice, input);
        rollHit(dice);
        context.rayType = round % 5 == 0 ? kRayCamera | kRayNoSpecular : u32{kRayCamera};
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        const double facingViewer = std::abs(dotOf(context.normal, context.rayDir));
        const Value transparency = ramps["transp"].at(facingViewer);
        BRDFSampler* const side = sampler->getBRDF(context.backSide ? kBackSide : kFrontSide);
        ASSERT_EQ(sampler->getBRDF(context.backSide ? kFrontSide : kBackSide), nullptr);
        context.resultTransparency = Color(0.5f, 0.25f, 1);
        const Vector toLight = dice.direction();
        const Color light = dice.color(0, 2);
        Color shadowed = light, unshadowed(1);
        const int flags = dice.below(4);
        const Color color = side->eval(context, toLight, shadowed, unshadowed, 2.0f, flags);
        Value expected;
        if (flags & kEvalDiffuse)
            expected = diffuseOf(toLight, light, input, transparency);
        if (flags & kEvalSpecular && !(context.rayType & kRayNoSpecular)) {
            const Value highlight = specularOf(toLight, light);
            shining += highlight.r > 0.01;
            expected = sum(expected, highlight);
        }
        bright += expected.r > 0.01;
        expectNear(color, expected, 1e-4, "round " + std::to_string(round));
        EXPECT_EQ(shadowed, light * context.resultTransparency);
        EXPECT_EQ(unshadowed, context.resultTransparency);
        mtl.releaseBSDF(context, sampler);
    }
    EXPECT_GT(bright, 300);
    EXPECT_GT(shining, 50);
}

TEST_F(MayaRampBRDFTest, AddsAllButDirectLightAsTheFormulasSay) {
    Dice dice;
    renderer.tracedColor = Color(0.5f, 1, 2);
    int traced = 0;
    for (int round = 0; round < 2000; ++round) {
        const int input = dice.below(4);
        roll(dice, input);
        limits[0] = dice.below(3);
        limits[1] = dice.below(3);
        startFrame(mtl, {{"reflection_limit", limits[0]}, {"refraction_limit", limits[1]}});
        rollHit(dice);
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        const Value transparency =
            ramps["transp"].at(std::abs(dotOf(context.normal, context.rayDir)));
        // The light of two lamps, for ramps by brightness.
        double lightInput = 0;
        for (int lamp = 0; lamp < 2; ++lamp) {
            const Vector toLight = dice.direction();
            Color light = dice.color(0, 1), same = light;
            lightInput += colorPosition(toLight, light, input);
            sampler->getBRDF(context.backSide ? kBackSide : kFrontSide)
                ->eval(context, toLight, light, same, 2.0f, kEvalDiffuse);
        }
        // A hit that another material has turned over and handed on is turned back for the call.
        const bool isTurned = round % 4 == 0;
        if (isTurned)
            context.flipSide();
        const PelkContext before = context;
        sampler->getBRDF(before.backSide == (isTurned ? 1 : 0) ? kFrontSide : kBackSide)
            ->traceForward(context, 0);
        expectRayAndHitAsBefore(before, context);
        if (isTurned)
            context.flipSide();

        const double reflectivity = ramps["reflectivity"].at(facing()).r;
        Value expected;
        if (reflectivity >= 1e-6) {
            const double share = tracedShare(reflectivity);
            traced += share > 0;
            const Value environment = ramps["environm"].at(facing());
            expected = sum(scaled(valueOf(renderer.tracedColor), share),
                           scaled(product(environment, environment), reflectivity));
        }
        const Value half = ramps["color"].at(0.5), full = ramps["color"].at(1);
        expected = sum(expected, scaled(product(sum(half, full), valueOf(ambient.color)),
                                        0.5 * 0.5 * (half.a + full.a) * ambient.alpha));
        if (input >= 2)
            expected = sum(expected, ramps["color"].at(lightInput * weight));
        expected = sum(product(expected, opacity(transparency)), ramps["incan"].at(facing()));
        // A weight near the bound of what is traced may fall on either side of it.
        expectNear(context.resultColor, expected, 1e-3, "round " + std::to_string(round));
        EXPECT_EQ(context.resultAlpha, complement(context.resultTransparency));
        expectNear(context.resultAlpha, opacity(transparency), 1e-5, "alpha");
        mtl.releaseBSDF(context, sampler);
    }
    EXPECT_GT(traced, 300);
}

TEST_F(MayaRampBRDFTest, SpawnsRaysThatTheHostCanFollow) {
    setRamp("reflectivity", Color(0.8f));
    startFrame(
        mtl,
        {{"refractions", true}, {"refraction_limit", 5}, {"reflection_limit", 5}, {"ior", 1.5f}});
    context.rayDir = normalizeGuarded({0.6f, 0, -0.8f});
    context.refractionOrigin = {1, 2, 2.5};
    context.rayContribution = 0.5f;
    mtl.shade(context);
    ASSERT_EQ(renderer.traced.size(), 2u);
    const PelkContext &through = renderer.traced[0], &back = renderer.traced[1];
    EXPECT_EQ(context.spawnRequests[0].flags, kRayRefract);
    EXPECT_EQ(context.spawnRequests[1].flags, kRayReflect);
    EXPECT_EQ(through.rayOrigin, context.refractionOrigin);
    EXPECT_EQ(back.rayOrigin, context.hitPoint);
    EXPECT_THAT(through.rayDir, VectorNear(Vector(0.4f, 0, -std::sqrt(0.84f)), 1e-6f));
    EXPECT_THAT(back.rayDir, VectorNear(Vector(0.6f, 0, 0.8f), 1e-6f));
    for (const PelkContext* ray : {&through, &back}) {
        EXPECT_EQ(ray->parentHitLink, context.hitLink);
        EXPECT_EQ(ray->rayMinT, 0.0);
        EXPECT_EQ(ray->rayMaxT, kRayFar);
        EXPECT_NE(ray->rayDerivX, Vector()) << "ray differentials";
        EXPECT_EQ(ray->spawnWeight, Color(ray->rayContribution));
    }
    EXPECT_EQ(back.rayDerivX, Vector(0.5f, 0, 0)) << "along the surface a mirror keeps them";
    EXPECT_NEAR(through.rayContribution + back.rayContribution, 0.8f * 0.5f, 1e-6f);
    EXPECT_EQ(context.spawnRequests[0].index, 0);
}

TEST_F(MayaRampBRDFTest, TracesNoMoreThanItsLimitsAndWeightsAllow) {
    const struct {
        const char* what;
        float reflectivity;
        bool refractions;
        int reflectionLimit, refractionLimit;
        float ior;
        Vector rayDir;
        float contribution;
        std::vector<u32> flags;  ///< of the rays
    } cases[] = {
        {"limits as by default", 1, false, 0, -1, 1.5f, {0, 0, -1}, 1, {}},
        {"no reflectivity, no refraction", 0, true, 5, 5, 1.5f, {0, 0, -1}, 1, {}},
        {"refractions not asked for", 1, false, 2, 5, 1.5f, {0, 0, -1}, 1, {kRayReflect}},
        {"at the limit of both", 1, true, 1, 1, 1.5f, {0, 0, -1}, 1, {}},
        {"reflection alone", 1, true, 2, 1, 1.5f, {0, 0, -1}, 1, {kRayReflect}},
        {"refraction alone", 1, true, 1, 2, 1.5f, {0, 0, -1}, 1, {kRayRefract}},
        {"no surface leaves nothing to reflect", 1, true, 2, 2, 1, {0, 0, -1}, 1, {kRayRefract}},
        {"total reflection knows no limit", 1, true, 0, 2, 1.5f, {0.8f, 0, 0.6f}, 1, {kRayReflect}},
        {"too weak for the picture", 0.5f, true, 5, 5, 1.5f, {0, 0, -1}, 0.001f, {}},
        {"the refraction is strong enough", 1, true, 5, 5, 1.5f, {0, 0, -1}, 0.01f, {kRayRefract}},
    };
    for (const auto& c : cases) {
        setRamp("reflectivity", Color(c.reflectivity));
        startFrame(mtl, {{"refractions", c.refractions},
                         {"reflection_limit", c.reflectionLimit},
                         {"refraction_limit", c.refractionLimit},
                         {"ior", c.ior}});
        context.traceDepth = 1;
        context.rayDir = c.rayDir;
        context.backSide = c.rayDir.z > 0;
        context.rayContribution = c.contribution;
        context.spawnRequests.clear();
        mtl.shade(context);
        std::vector<u32> flags;
        for (const SpawnRequest& request : context.spawnRequests)
            flags.push_back(request.flags);
        EXPECT_EQ(flags, c.flags) << c.what;
    }
    // A host without further contexts: black.
    context.refusesToSpawn = true;
    context.rayContribution = 1;
    mtl.shade(context);
    EXPECT_EQ(context.resultColor, Color(0));
}

TEST_F(MayaRampBRDFTest, TakesTheIndexOfRefractionFromTheMediaOnBothSides) {
    MediumPlugin glass(1.5f), water(1.25f);
    setRamp("reflectivity", Color(1));
    startFrame(mtl,
               {{"refractions", true}, {"refraction_limit", 9}, {"ior", 2.0f}, {"volume", &glass}});
    const auto indexOf = [&](float cosine, std::vector<PelkVolume*> media, bool isTurned) {
        // Refraction at a right angle tells nothing, so the ray comes at a slant.
        context.rayDir = {std::sqrt(1 - cosine * cosine), 0, cosine};
        context.backSide = cosine > 0;
        context.media = std::move(media);
        renderer.traced.clear();
        if (isTurned)
            context.flipSide();
        mtl.shade(context);
        if (isTurned)
            context.flipSide();
        const Vector out = renderer.traced.at(0).rayDir;
        return cosine < 0 ? context.rayDir.x / out.x : out.x / context.rayDir.x;
    };
    EXPECT_NEAR(indexOf(-0.8f, {}, false), 1.5f, 1e-5f) << "into glass";
    EXPECT_NEAR(indexOf(-0.8f, {&water}, false), 1.5f / 1.25f, 1e-5f) << "from water into glass";
    EXPECT_NEAR(indexOf(0.9f, {&glass}, false), 1.5f, 1e-5f) << "out of glass";
    EXPECT_NEAR(indexOf(0.9f, {&water, &glass}, false), 1.5f / 1.25f, 1e-5f) << "back into water";
    EXPECT_NEAR(indexOf(0.9f, {&glass, &water}, false), 1, 1e-5f) << "it never was in this glass";
    EXPECT_NEAR(indexOf(0.9f, {&glass}, true), 1.5f, 1e-5f) << "a turned hit is turned back";
    startFrame(mtl, {{"volume", static_cast<PluginBase*>(nullptr)}});
    EXPECT_NEAR(indexOf(-0.8f, {&water}, false), 2, 1e-5f) << "no medium of its own";
}

TEST_F(MayaRampBRDFTest, LeavesLightAloneWhereItIsClear) {
    setRamp("color", Color(1));
    setRamp("transp", Color(1));
    setRamp("incan", Color(0.25f));
    for (const int input : {0, 2}) {
        startFrame(mtl, {{"color_input", input}});
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        context.resultTransparency = Color(0.5f);
        Color light(3), unshadowed(2);
        EXPECT_EQ(
            sampler->getBRDF(kFrontSide)
                ->eval(context, {0, 0, 1}, light, unshadowed, 2, kEvalDiffuse | kEvalSpecular),
            Color(0));
        EXPECT_EQ(light, Color(3));
        EXPECT_EQ(unshadowed, Color(2));
        mtl.releaseBSDF(context, sampler);
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), (Results{Color(0.25f), Color(1), Color(0), Color(1)}))
            << "incandescence isn't scaled by alpha";
    }
}

TEST_F(MayaRampBRDFTest, TellsHostsToGatherNothingForIt) {
    startFrame(mtl);
    BSDFSampler* const sampler = mtl.getBSDF(context, 0);
    BRDFSampler* const side = sampler->getBRDF(kFrontSide);
    Color light(2);
    EXPECT_EQ(side->getDiffuseColor(light), Color(0));
    EXPECT_EQ(light, Color(0));
    EXPECT_EQ(side->getLightMult(light), Color(1));
    EXPECT_EQ(light, Color(1)) << "layers below get all light";
    mtl.releaseBSDF(context, sampler);
}

}  // namespace
