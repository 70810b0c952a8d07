#include "materials/maya/ramp_fixture.h"
#include "materials/test_channel_host.h"
#include "pelk/contract/shading.h"

namespace {

double dotOf(Vector a, Vector b) {
    return static_cast<double>(a.x) * b.x + static_cast<double>(a.y) * b.y +
           static_cast<double>(a.z) * b.z;
}

void expectNear(Color color, const Value& expected, double tolerance, const std::string& what) {
    const double off[] = {color.r - expected[0], color.g - expected[1], color.b - expected[2]};
    const double scale = 1 + std::abs(expected[0]) + std::abs(expected[1]) + std::abs(expected[2]);
    for (const double difference : off)
        EXPECT_NEAR(difference, 0, tolerance * scale) << what;
}

/// A hit within up to two media.
struct MediaContext : FakeContext {
    using FakeContext::FakeContext;
    PelkVolume *inner = nullptr, *outer = nullptr;

    PelkVolume* currentVolume(PelkVolume* skip) override {
        return inner && inner == skip ? outer : inner;
    }
};

/// Gives back what was written to it.
struct Channels : RecordingFragment {
    std::map<int, Color> written;

    void setChannel(int index, const void* value) override {
        written[index] = *static_cast<const Color*>(value);
    }
    void getChannel(int index, void* out) override { *static_cast<Color*>(out) = written[index]; }
};

/// Random ramps and hits, and what the material must answer, in double precision and by other ways
/// where there are some: angles instead of root formulas, Blinn's minimum instead of its cases.
class MayaRampBRDFTest : public RampFixture {
protected:
    MayaRampBRDFTest() {
        channelHost.channels.list.push_back(nullptr);
        renderer.sequenceData.addInterface(&channelHost, 0);
    }

    /// Sets everything to random values, for a hit that isn't too near the silhouette.
    void roll(RampDice& dice) {
        for (const char* name : {"color", "transp", "incan", "specular", "environm",
                                 "specularRollOff", "reflectivity"}) {
            const std::vector<RampPoint> white = {{0, {Color(1), 1}, 0}};
            setRamp(name, ramps[name] = dice.below(8) ? dice.ramp() : white);
        }
        diffuse = dice.between(0.2f, 1);
        eccentricity = dice.between(0.05f, 1);
        specularity = dice.between(0.1f, 1);
        ambientTex.color = {dice.color(1), dice.between(0, 1)};
        PluginBase* const volume = dice.below(2) ? &glass : nullptr;
        setParams(mtl, {{"color_input", input = dice.below(6)}, {"diffuse_tex", diffuse}});
        setParams(mtl, {{"fscatter_tex", 0.25f}, {"eccentricity_tex", eccentricity}});
        setParams(mtl, {{"specularity_tex", specularity}, {"ambient_tex", &ambientTex}});
        setParams(mtl, {{"reflection_limit", limits[0] = dice.below(4) - 1}, {"volume", volume}});
        setParams(mtl, {{"refraction_limit", limits[1] = dice.below(4) - 1}});
        ior = dice.below(8) ? dice.between(1.05f, 2) : 1;
        startFrame(mtl, {{"refractions", refracts = dice.below(4) > 0}, {"ior", ior}});
        do {
            context.normal = dice.direction();
            context.rayDir = dice.direction();
            cosine = -dotOf(context.normal, context.rayDir);
        } while (std::abs(cosine) < 0.1);
        context.geomNormal = dice.below(8) ? context.normal : -context.normal;
        context.backSide = cosine < 0;
        context.traceDepth = 1;
        context.rayType = dice.below(5) ? u32{kRayCamera} : kRayCamera | kRayNoSpecular;
        context.rayContribution = dice.below(4) ? 1 : 0.004f;
        context.refusesToSpawn = dice.below(16) == 0;
        context.spawnRequests.clear();
        renderer.traced.clear();
        PelkVolume* const media[] = {nullptr, &water, &glass};
        context.inner = media[dice.below(3)];
        context.outer = media[dice.below(3)];
        facing = std::max(0.0, cosine);
        opacity = 1.0 - at("transp", std::abs(cosine));
        lightInput = 0;
        isLit = false;
        rays.clear();
        channels.written.clear();
        expected = {{kAliasDiffuse, Value(0.0, 4)}};
    }

    Value at(const char* ramp, double position) { return rampAt(ramps[ramp], position); }

    Value diffuseOf(Vector toLight, Color light) {
        const double toNormal = std::clamp(dotOf(context.normal, toLight), -1.0, 1.0);
        const double mean = (static_cast<double>(light.r) + light.g + light.b) / 3;
        const double lit = std::max(0.0, toNormal);
        const double angle = std::acos(toNormal) / std::acos(-1.0);
        const double places[] = {(1 - angle) * 1.1, facing, lit * mean, lit, 1, 0};
        if (input == 2 || input == 3) {
            lightInput += places[input];
            return Value(0.0, 4);
        }
        isLit = true;
        const Value color = opacity * at("color", places[input]) * (0.75 * diffuse);
        expected[kAliasDiffuse] = color;
        return valueOf({light, 1}) * color * (lit * mean);
    }

    Value specularOf(Vector toLight, Color light) {
        const Vector n = context.normal, toViewer = -context.rayDir;
        const Vector half = normalizeGuarded(toLight + toViewer);
        // The frame is that of the viewer's side.
        const double nh = dotOf(context.backSide ? -n : n, half), vh = dotOf(half, toViewer);
        if (nh <= 1e-6 || vh <= 1e-6)
            return Value(0.0, 4);
        const double nv = cosine, nl = dotOf(n, toLight);
        const double e = static_cast<double>(eccentricity) * eccentricity;
        const double d = std::pow(e / (nh * nh * (e - 1) + 1), 2);
        const double g = std::min({1.0, 2 * nh * nv / vh, 2 * nh * nl / vh}) / nv;
        const double f0 = at("specularRollOff", nv)[0];
        const double f = std::clamp(f0 + (1 - f0) * std::pow(1 - vh, 5), 0.0, 1.0);
        const Vector mirrored = toLight - n * static_cast<float>(2 * nl);
        const Value color = at("specular", dotOf(context.rayDir, mirrored));
        return expected[kAliasSpecular] = color * valueOf({light, 1}) * (d * g * f * specularity);
    }

    /// Index of refraction behind the surface over that before it, as the ray comes.
    double relativeIndex() const {
        if (!context.surfaceVolume)
            return ior;
        const bool enters = dotOf(context.rayDir, context.geomNormal) < 0;
        if (!enters && context.inner != &glass)
            return 1;
        PelkVolume* const before = enters ? context.inner : context.outer;
        return before == &glass ? 1 : before ? 1.5 / 1.25 : 1.5;
    }

    Value rayOf(u32 flag, double weight, double filter) {
        Value seen(0.0, 4);
        if (weight * context.rayContribution >= 0.001) {
            rays.push_back(flag);
            if (!context.refusesToSpawn)
                seen = valueOf({renderer.tracedColor, 1}) * (weight * context.rayContribution);
        }
        const bool isThrough = flag == kRayRefract;
        expected[isThrough ? kAliasRefraction : kAliasReflection] = seen * opacity;
        expected[isThrough ? kAliasRawRefraction : kAliasRawReflection] = seen * opacity / filter;
        expected[isThrough ? kAliasRefractionWeight : kAliasReflectivity] = Value(filter, 4);
        return seen;
    }

    Value tracedOf(double reflectivity) {
        bool reflects = context.traceDepth < limits[0];
        double share = 1;
        Value sum(0.0, 4);
        if (refracts && context.traceDepth < limits[1]) {
            const double index = relativeIndex(), cosIn = std::abs(cosine);
            const double sinOut = std::sqrt(1 - cosIn * cosIn) * (cosine > 0 ? 1 / index : index);
            if (sinOut >= 1) {
                reflects = true;
            } else {
                // Fresnel by the sine and tangent laws.
                const double in = std::acos(cosIn), out = std::asin(sinOut);
                const double s = std::sin(in - out) / std::sin(in + out);
                const double p = std::tan(in - out) / std::tan(in + out);
                share = (s * s + p * p) / 2;
                const double through = (1 - share) * reflectivity;
                sum += rayOf(kRayRefract, through, through);
            }
        }
        if (reflects && share > 1e-6)
            sum += rayOf(kRayReflect, share * reflectivity, reflectivity);
        return sum;
    }

    /// What traceForward finds.
    Value forwardOf() {
        Value sum(0.0, 4);
        const double reflectivity = at("reflectivity", facing)[0];
        if (reflectivity >= 1e-6) {
            const Value environment = at("environm", facing);
            sum = tracedOf(reflectivity) + environment * environment * reflectivity;
        }
        const Value upper = at("color", 0.5) + at("color", 1);
        Value surface = upper * valueOf(ambientTex.color) * 0.5;
        surface *= upper[3] * ambientTex.color.alpha * 0.5;
        const bool isByBrightness = input == 2 || input == 3;
        if (isByBrightness)
            surface += at("color", lightInput * 0.75 * diffuse);
        else if (!isLit)
            expected[kAliasDiffuse] = at("color", 0) * opacity * (0.75 * diffuse);
        expected[kAliasDiffuse] += surface * opacity;
        expected[kAliasSelfIllumination] = at("incan", facing);
        return (sum + surface) * opacity + at("incan", facing);
    }

    /// Snell's law by the parts along the surface, and what else the host needs of a ray.
    void expectFollows(const PelkContext& ray) const {
        const Vector n = context.normal;
        const bool isThrough = ray.spawnFlags == kRayRefract;
        const double index = relativeIndex(), eta = cosine > 0 ? 1 / index : index;
        const Vector along = cross(n, context.rayDir) * static_cast<float>(isThrough ? eta : 1);
        EXPECT_THAT(cross(n, ray.rayDir), VectorNear(along, 1e-6f));
        EXPECT_EQ(dotOf(n, ray.rayDir) * -cosine > 0, isThrough);
        EXPECT_EQ(ray.rayOrigin, isThrough ? context.refractionOrigin : context.hitPoint);
        EXPECT_EQ(ray.parentHitLink, context.hitLink);
        EXPECT_EQ(ray.rayMaxT, kRayFar);
        const auto wide = [](Vector v) { return length(v) > 0.01f; };
        EXPECT_TRUE(wide(ray.rayDerivX) && wide(ray.rayDerivY)) << "ray differentials";
        EXPECT_EQ(ray.spawnWeight, Color(ray.rayContribution));
    }

    ThreadData thread;
    MediaContext context{renderer, thread};
    TestChannelHost channelHost;
    Channels channels;
    FakeVolume glass, water{1.25f};
    FakeTexture ambientTex;
    std::map<std::string, std::vector<RampPoint>> ramps;
    float diffuse = 1, eccentricity = 0.5f, specularity = 1, ior = 1.5f;
    int input = 0, limits[2] = {};  // of reflections and refractions
    bool refracts = false;

    // Of the hit.
    double cosine = 1, facing = 1;  // to the viewer
    Value opacity;
    double lightInput = 0;
    bool isLit = false;
    std::vector<u32> rays;
    std::map<int, Value> expected;  // by the channel's alias
};

TEST_F(MayaRampBRDFTest, ShowsWhatTheFormulasSay) {
    RampDice dice;
    renderer.tracedColor = Color(0.5f, 1, 2);
    context.resultFragment = &channels;
    context.refractionOrigin = {1, 2, 2.5};
    int bright = 0, shining = 0, traced = 0;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        roll(dice);
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        BRDFSampler* const side = sampler->getBRDF(context.backSide ? kBackSide : kFrontSide);
        ASSERT_EQ(sampler->getBRDF(context.backSide ? kFrontSide : kBackSide), nullptr);
        context.surfaceVolume = sampler->getVolume(context);
        context.resultTransparency = Color(0.5f, 0.25f, 1);
        const bool isClear = opacity.max() < 1e-6;
        for (int lamp = 0; lamp < 2; ++lamp) {
            const Vector toLight = dice.direction();
            const Color light = dice.color(2);
            Color shadowed = light, unshadowed(1);
            const int flags = isClear ? 3 : dice.below(4);
            const Color color = side->eval(context, toLight, shadowed, unshadowed, 2.0f, flags);
            Value sum(0.0, 4);
            if (!isClear && flags & kEvalDiffuse)
                sum += diffuseOf(toLight, light);
            bright += sum[0] > 0.01;
            if (!isClear && flags & kEvalSpecular && !(context.rayType & kRayNoSpecular))
                sum += specularOf(toLight, light);
            shining += !isLit && sum[0] > 0.01;
            expectNear(color, sum, 1e-4, "light");
            const Color passed = isClear ? Color(1) : context.resultTransparency;
            EXPECT_EQ(shadowed, light * passed);
            EXPECT_EQ(unshadowed, passed);
        }
        // A hit that another material has turned over and handed on is turned back for the call.
        const bool isTurned = dice.below(4) == 0;
        if (isTurned)
            context.flipSide();
        const PelkContext before = context;
        side->traceForward(context, 0);
        expectRayAndHitAsBefore(before, context);
        if (isTurned)
            context.flipSide();
        expectNear(context.resultColor, forwardOf(), 1e-3, "forward");
        EXPECT_EQ(context.resultAlpha, complement(context.resultTransparency));
        expectNear(context.resultAlpha, opacity, 1e-5, "alpha");
        ASSERT_EQ(context.spawnRequests.size(), rays.size());
        for (std::size_t i = 0; i < rays.size(); ++i)
            EXPECT_EQ(context.spawnRequests[i].flags, rays[i]);
        for (const PelkContext& ray : renderer.traced)
            expectFollows(ray);
        traced += static_cast<int>(renderer.traced.size());
        for (const auto& [alias, value] : expected)
            expectNear(channels.written[alias], value, 1e-3, "channel " + std::to_string(alias));
        EXPECT_EQ(channels.written.size(), expected.size());
        // Hosts gather nothing for it, and layers below get all light.
        Color light(2);
        EXPECT_EQ(side->getDiffuseColor(light), Color(0));
        EXPECT_EQ(side->getLightMult(light), Color(1));
        EXPECT_EQ(light, Color(1));
        mtl.releaseBSDF(context, sampler);
    }
    EXPECT_GT(bright, 450);
    EXPECT_GT(shining, 75);
    EXPECT_GT(traced, 450);
}

}  // namespace
