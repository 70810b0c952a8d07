#include <cmath>

#include "materials/maya/ramp_fixture.h"

namespace {

/// A BSDF plug-in that bumps the normal and leads back to the material that it stands for.
class BumpStandIn : public RecordingMaterial {
public:
    BSDFInterface* way = nullptr;
    Vector bumped{0.6f, 0, 0.8f};

    BSDFSampler* getBSDF(PelkContext& context, int flags) override {
        note("bump");
        seenFlags = flags;
        const ScopedValue normal(context.normal, bumped);
        return way ? way->getBSDF(context, flags) : nullptr;
    }
    void releaseBSDF(PelkContext& context, BSDFSampler* released) override {
        note("unbump");
        way->releaseBSDF(context, released);
    }
};

class MtlMayaRampTest : public RampFixture {
protected:
    Color shaded() {
        mtl.shade(context);
        return context.resultColor;
    }
};

TEST_F(MtlMayaRampTest, ShadesInTheHostsOrderAndWritesTheChannelsLast) {
    FakeChannel first(4), second(2);
    Plugin noChannel;
    RecordingFragment fragment;
    context.resultFragment = &fragment;
    context.directLight = Color(0.25f, 0.5f, 3);
    setRamp("incan", Color(0.25f));
    setRamp("transp", Color(0.5f, 0.25f, 2));
    setParams(mtl, {{"channels", std::vector<PluginBase*>{&first, nullptr, &noChannel, &second}}});
    startFrame(mtl);
    const PelkContext before = context;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), (Results{Color(0.5f, 0.75f, 1), Color(0.5f, 0.25f, 1),
                                           Color(0.5f, 0.75f, 0), Color(0.5f, 0.25f, 1)}))
        << "limited to 1";
    expectRayAndHitAsBefore(before, context);
    EXPECT_EQ(log.calls,
              (std::vector<std::string>{"computeDirectLighting", "setChannel", "setChannel"}));
    using Written = std::vector<std::pair<int, Color>>;
    EXPECT_EQ(fragment.channels, (Written{{4, context.resultColor}, {2, context.resultColor}}));
    EXPECT_TRUE(renderer.log.texts.empty()) << "bright light is no fault";

    mtl.frameEnd(renderer);
    fragment.channels.clear();
    mtl.shade(context);
    EXPECT_TRUE(fragment.channels.empty()) << "the channels are those of a frame";
    mtl.frameBegin(renderer);
    mtl.shade(context);
    EXPECT_EQ(fragment.channels.size(), 2u);
}

TEST_F(MtlMayaRampTest, ShadowRaysSeeTheTransparencyAlone) {
    setRamp("transp", Color(0.25f));
    setRamp("incan", Color(1));
    setRamp("reflectivity", Color(1));
    startFrame(mtl, {{"reflection_limit", 9}});
    context.rayType = kRayShadow;
    EXPECT_EQ(shaded(), Color(0));
    EXPECT_EQ(context.resultTransparency, Color(0.25f));
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(MtlMayaRampTest, ShowsItsMediumToTheHost) {
    MediumPlugin glass(1.5f);
    startFrame(mtl, {{"volume", &glass}});
    mtl.shade(context);
    EXPECT_EQ(context.surfaceVolume, &glass);
    Plugin other;
    startFrame(mtl, {{"volume", &other}});
    mtl.shade(context);
    EXPECT_EQ(context.surfaceVolume, nullptr) << "a plug-in without the interface";
}

TEST_F(MtlMayaRampTest, TakesItsSamplerFromTheBumpThatLeadsBackToIt) {
    BumpStandIn bump;
    bump.way = &mtl;
    setRamp("transp", {{0, {Color(0), 1}, 1}, {1, {Color(1), 1}, 1}});
    startFrame(mtl, {{"bump_brdf", &bump}});
    mtl.shade(context);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"bump", "computeDirectLighting", "unbump"}));
    EXPECT_EQ(bump.seenFlags, kSingleSided);
    EXPECT_EQ(context.resultTransparency, Color(0.8f)) << "seen by the bumped normal";

    // Without a sampler the hit stays as it is, but for the check of the result.
    bump.way = nullptr;
    context.resultColor = Color(-1, 0.5f, 7);
    context.resultAlpha = Color(5);
    mtl.shade(context);
    EXPECT_EQ(context.resultColor, Color(0, 0.5f, 7));
    EXPECT_EQ(context.resultAlpha, Color(5));

    bump.hiddenFaces = {BSDFInterface::kInterfaceID};
    startFrame(mtl);
    mtl.shade(context);
    EXPECT_EQ(context.resultTransparency, Color(1)) << "its own sampler";
}

TEST_F(MtlMayaRampTest, RepairsAndReportsWhatNoLightCanBeOncePerFrame) {
    FakeTexture texture;
    texture.color = {Color(kNaN, -3, 0.5f), 1};
    const std::vector<Textured<AColor>> colors = {{{}, &texture}};
    setRamp("incan", Color(0));
    setParams(mtl, {{"incan_colors", colors}});
    startFrame(mtl);
    EXPECT_EQ(shaded(), Color(0, 0, 0.5f)) << "a negative value is limited, not reported";
    EXPECT_EQ(shaded(), Color(0, 0, 0.5f));
    EXPECT_EQ(renderer.log.texts,
              std::vector<std::string>{"w Material \"toon\" produced overbright or invalid color "
                                       "(rgb=nan 0.000000 0.500000).\n"});
    startFrame(mtl);
    mtl.shade(context);
    EXPECT_EQ(renderer.log.texts.size(), 2u) << "one for the new frame";

    texture.color = {Color(HUGE_VALF, -HUGE_VALF, 1e30f), 1};
    startFrame(mtl);
    EXPECT_EQ(shaded(), Color(1, 0, 1)) << "limited";
    renderer.sequenceData.log = nullptr;
    texture.color.color.r = kNaN;
    EXPECT_EQ(shaded(), Color(0, 0, 1)) << "nobody listens";
}

TEST_F(MtlMayaRampTest, LetsNoTextureMakeAPictureOfNoNumbers) {
    FakeTexture texture;
    setRamp("reflectivity", Color(1));
    for (const char* ramp : {"color", "transp", "incan", "specular", "environm"}) {
        setRamp(ramp, {{0, {Color(0.5f), 1}, 1}, {1, {Color(0.25f), 1}, 2}});
        const std::vector<Textured<AColor>> colors = {{{}, &texture}, {{Color(1), 1}}};
        setParams(mtl, {{(std::string(ramp) + "_colors").c_str(), colors}});
    }
    context.onLight = [&](BSDFSampler* sampler) {
        Color light(1), same(1);
        context.directLight =
            sampler->getBRDF(kFrontSide)->eval(context, {0, 0.6f, 0.8f}, light, same, 2, 3);
    };
    const float odd[] = {kNaN, HUGE_VALF, -HUGE_VALF, -1, 1e38f};
    for (const float number : odd)
        for (const Vector normal : {Vector(0, 0, 1), Vector(), Vector(kNaN, 0, 1)})
            for (const int input : {0, 1, 2, 3}) {
                texture.color = {Color(number), number};
                texture.number = number;
                context.normal = normal;
                startFrame(mtl, {{"color_input", input},
                                 {"ambient_tex", &texture},
                                 {"eccentricity_tex", &texture},
                                 {"diffuse_tex", &texture},
                                 {"refractions", true},
                                 {"refraction_limit", 5},
                                 {"reflection_limit", 5}});
                const Color color = shaded();
                EXPECT_TRUE(isFinite(color) && color.r >= 0 && color.g >= 0 && color.b >= 0)
                    << number << ", input " << input;
                EXPECT_LE(renderer.log.texts.size(), 1u);
                renderer.log.texts.clear();
            }
}

TEST_F(MtlMayaRampTest, WritesItsNineChannelsByAlias) {
    const std::vector<int> aliases = {
        kAliasSpecular,         kAliasDiffuse,       0,
        kAliasReflection,       kAliasRawReflection, kAliasReflectivity,
        kAliasRefraction,       kAliasRawRefraction, kAliasRefractionWeight,
        kAliasSelfIllumination, kAliasDiffuse,       kAliasNormal};
    AliasedChannels channels(renderer.sequenceData, aliases);
    ChannelFragment fragment;
    const auto at = [&](int alias) {
        const auto last = std::find(aliases.rbegin(), aliases.rend(), alias);
        return fragment.last(static_cast<int>(aliases.rend() - last) - 1);
    };
    context.resultFragment = &fragment;
    renderer.tracedColor = Color(2);
    setRamp("color", Color(0.5f));
    setRamp("transp", Color(0.5f));
    setRamp("incan", Color(0.125f));
    setRamp("reflectivity", Color(0.5f));
    setRamp("specular", Color(1));
    setRamp("specularRollOff", Color(1));
    FakeTexture ambient(AColor{Color(1), 0.5f});
    startFrame(mtl, {{"refractions", true},
                     {"refraction_limit", 1},
                     {"reflection_limit", 1},
                     {"ior", 3.0f},
                     {"eccentricity_tex", 1.0f},
                     {"specularity_tex", 0.5f},
                     {"ambient_tex", &ambient}});
    // Fresnel at a right angle is ((3 - 1) / (3 + 1))^2, a quarter.
    mtl.shade(context);
    EXPECT_EQ(at(kAliasRefractionWeight), Color(0.375f));
    EXPECT_EQ(at(kAliasRefraction), Color(0.375f * 2 * 0.5f)) << "by alpha";
    EXPECT_EQ(at(kAliasRawRefraction), Color(2 * 0.5f));
    EXPECT_EQ(at(kAliasReflectivity), Color(0.5f));
    EXPECT_EQ(at(kAliasReflection), Color(0.125f * 2 * 0.5f));
    EXPECT_EQ(at(kAliasRawReflection), Color(0.25f * 2 * 0.5f));
    EXPECT_EQ(at(kAliasSelfIllumination), Color(0.125f));
    EXPECT_EQ(at(kAliasDiffuse), Color(0.5f * 0.5f + 0.25f * 0.5f)) << "unlit, and ambient";
    EXPECT_EQ(fragment.last(1), Color(0)) << "of two with one alias the later";

    // A light enters the colour by itself; the ramp's start isn't added then.
    context.onLight = [&](BSDFSampler* sampler) {
        context.resultTransparency = Color(0.5f);
        Color light(1), same(1);
        sampler->getBRDF(kFrontSide)->eval(context, {0, 0, 1}, light, same, 2, 3);
    };
    mtl.shade(context);
    EXPECT_EQ(at(kAliasSpecular), Color(0.5f));
    EXPECT_EQ(at(kAliasDiffuse), Color(0.5f * 0.5f + 0.25f * 0.5f));

    // Without a change of medium all goes through.
    fragment.channels.clear();
    context.onLight = nullptr;
    startFrame(mtl, {{"ior", 1.0f}, {"color_input", 2}});
    mtl.shade(context);
    EXPECT_EQ(at(kAliasRefractionWeight), Color(0.5f));
    EXPECT_EQ(at(kAliasReflectivity), Color(0)) << "not written: nothing is reflected";
    EXPECT_EQ(at(kAliasDiffuse), Color((0.5f + 0.25f) * 0.5f)) << "a ramp by brightness, unlit";

    // Along the surface nothing does, and what a ray of no weight saw isn't known.
    context.rayDir = {1, 0, 0};
    startFrame(mtl, {{"ior", 0.5f}});
    mtl.shade(context);
    EXPECT_EQ(at(kAliasRefractionWeight), Color(0));
    EXPECT_EQ(at(kAliasRawRefraction), Color(0));

    // Without a host of channels, none is written.
    fragment.channels.clear();
    renderer.sequenceData.removeInterface(&channels);
    startFrame(mtl);
    mtl.shade(context);
    EXPECT_TRUE(fragment.channels.empty());
    renderer.sequenceData.addInterface(&channels, 0);
}

TEST_F(MtlMayaRampTest, ReadsTheHitsTexturesInOneOrderAndFallsBackWithoutThem) {
    struct Named : FakeTexture {
        const char* name;
        explicit Named(const char* name_) : FakeTexture(AColor{Color(0), 1}), name(name_) {
            number = 0.5f;
        }
        float getTexFloat(PelkContext& at) override {
            note(name);
            return FakeTexture::getTexFloat(at);
        }
        AColor getTexColor(PelkContext& at) override {
            note(name);
            return FakeTexture::getTexColor(at);
        }
    } diffuse("diffuse"), scatter("scatter"), ambient("ambient"), width("width"), shine("shine");
    startFrame(mtl, {{"specularity_tex", &shine},
                     {"eccentricity_tex", &width},
                     {"ambient_tex", &ambient},
                     {"fscatter_tex", &scatter},
                     {"diffuse_tex", &diffuse}});
    BSDFSampler* const sampler = mtl.getBSDF(context, 0);
    mtl.releaseBSDF(context, sampler);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"diffuse", "getTexFloat", "scatter",
                                                   "getTexFloat", "ambient", "getTexColor", "width",
                                                   "getTexFloat", "shine", "getTexFloat"}));
}

TEST_F(MtlMayaRampTest, FollowsTheParametersFromFrameToFrame) {
    setRamp("incan", Color(0.5f));
    startFrame(mtl);
    EXPECT_EQ(shaded(), Color(0.5f));
    setRamp("incan", std::vector<RampPoint>());
    startFrame(mtl);
    EXPECT_EQ(shaded(), Color(0)) << "a ramp of no points";
    endRender(mtl);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr) << "no pool";
    context.resultColor = Color(0.75f);
    EXPECT_EQ(shaded(), Color(0.75f)) << "left as it was";
}

}  // namespace
