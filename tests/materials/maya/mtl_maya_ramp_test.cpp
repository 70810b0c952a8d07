#include "materials/maya/ramp_fixture.h"

namespace {

class MtlMayaRampTest : public RampFixture {
protected:
    Color shaded() {
        mtl.shade(context);
        return context.resultColor;
    }

    FakeContext context = hit();
    FakeTexture texture;
};

TEST_F(MtlMayaRampTest, ShadesInTheHostsOrderAndWritesTheChannelsLast) {
    FakeChannel first(4), second(2);
    Plugin noChannel;
    RecordingFragment fragment;
    FakeVolume glass;
    context.resultFragment = &fragment;
    context.directLight = Color(0.25f, 0.5f, 3);
    setRamp("incan", Color(0.25f));
    setRamp("transp", Color(0.5f, 0.25f, 2));
    startFrame(mtl, {{"channels", std::vector<PluginBase*>{&first, nullptr, &noChannel, &second}},
                     {"specularity_tex", &texture},
                     {"ambient_tex", &texture},
                     {"diffuse_tex", &texture},
                     {"volume", &glass}});
    const PelkContext before = context;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), (Results{Color(0.5f, 0.75f, 1), Color(0.5f, 0.25f, 1),
                                           Color(0.5f, 0.75f, 0), Color(0.5f, 0.25f, 1)}))
        << "limited to 1; incandescence isn't scaled by alpha";
    expectRayAndHitAsBefore(before, context);
    EXPECT_EQ(context.surfaceVolume, &glass);
    EXPECT_EQ(log.calls,
              (std::vector<std::string>{"getTexFloat", "getTexColor", "getTexFloat",
                                        "computeDirectLighting", "setChannel", "setChannel"}));
    using Written = std::vector<std::pair<int, Color>>;
    EXPECT_EQ(fragment.channels, (Written{{4, context.resultColor}, {2, context.resultColor}}));
    context.rayType = kRayShadow;
    log.clear();
    mtl.shade(context);
    EXPECT_FALSE(log.has("computeDirectLighting"));
    EXPECT_EQ(context.resultTransparency, Color(0.5f, 0.25f, 1));

    mtl.frameEnd(renderer);
    fragment.channels.clear();
    mtl.shade(context);
    EXPECT_TRUE(fragment.channels.empty()) << "the channels are those of a frame";
    endRender(mtl);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr) << "no pool";
}

TEST_F(MtlMayaRampTest, TakesItsSamplerFromTheBump) {
    RecordingMaterial bump;
    bump.sampler.transparency = Color(0.75f);
    startFrame(mtl, {{"bump_brdf", &bump}});
    mtl.shade(context);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"getBSDF", "computeDirectLighting",
                                                   "traceForward", "releaseBSDF"}));
    EXPECT_EQ(bump.seenFlags, kSingleSided);
    EXPECT_EQ(context.resultTransparency, Color(0.75f));

    // Without a sampler the hit stays as it is, but for the check of the result.
    bump.givesSampler = false;
    context.resultColor = Color(-1, 0.5f, 7);
    context.resultAlpha = Color(5);
    EXPECT_EQ(shaded(), Color(0, 0.5f, 7));
    EXPECT_EQ(context.resultAlpha, Color(5));
}

TEST_F(MtlMayaRampTest, LetsNoTextureMakeAPictureOfNoNumbers) {
    setRamp("reflectivity", Color(1));
    for (const std::string ramp : {"color", "transp", "incan", "specular", "environm"}) {
        setRamp(ramp, {{0, {Color(0.5f), 1}, 1}, {1, {Color(0.25f), 1}, 2}});
        const std::vector<Textured<AColor>> colors = {{{}, &texture}, {{Color(1), 1}}};
        setParam(mtl, {(ramp + "_colors").c_str(), colors});
    }
    context.onLight = [&](BSDFSampler* sampler) {
        Color light(1), same(1);
        context.directLight =
            sampler->getBRDF(kFrontSide)->eval(context, {0, 0.6f, 0.8f}, light, same, 2, 3);
    };
    std::size_t numReported = 0;
    for (const float number : {kNaN, HUGE_VALF, -HUGE_VALF, -1.0f, 1e38f})
        for (const Vector normal : {Vector(0, 0, 1), Vector(), Vector(kNaN, 0, 1)})
            for (const int input : {0, 1, 2, 3}) {
                texture.color = {Color(number), number};
                texture.number = number;
                context.normal = normal;
                setParams(mtl, {{"ambient_tex", &texture}, {"eccentricity_tex", &texture}});
                setParams(mtl, {{"refraction_limit", 5}, {"reflection_limit", 5}});
                setParams(mtl, {{"refractions", true}, {"diffuse_tex", &texture}});
                startFrame(mtl, {{"color_input", input}});
                renderer.log.texts.clear();
                mtl.shade(context);
                const Color color = shaded();
                EXPECT_LE(renderer.log.texts.size(), 1u) << "one in a frame";
                numReported += renderer.log.texts.size();
                EXPECT_TRUE(isFinite(color) && color.r >= 0 && color.g >= 0 && color.b >= 0)
                    << number << ", input " << input;
            }
    EXPECT_GT(numReported, 12u) << "in each frame anew";
}

}  // namespace
