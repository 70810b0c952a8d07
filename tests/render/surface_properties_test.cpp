// What surfaces ask of the renderer as a whole, and what lies behind the scene.

#include "frame/surface_properties.h"
#include "frame/context.h"
#include "frame/pelk_material.h"
#include "frame/renderer.h"
#include "frame/texture.h"
#include "render/host_plugin.h"
#include "render_fixture.h"
#include "support/plugin_manager.h"

namespace Tarnkit {
namespace {

/// Another material with the surface properties that the test sets; `shows_matte_light` makes it
/// show what a matte is told: red without, green with what stands in the way.
class TestSurface final : public PelkMaterial {
public:
    struct Params {
        PluginBase* base = nullptr;
        int shows_matte_light = 0;
    };
    static constexpr const char* kName = "TestSurface";
    static constexpr u32 kID = 0x7EFF0001;
    static constexpr u64 kFaces[] = {EXT_MATERIAL};

    explicit TestSurface(PelkPluginDesc* pluginDesc) : PelkMaterial(pluginDesc) {
        kParams.bind(paramList, params);
    }
    static void addParameters(PelkParameterListDesc& list) { kParams.addTo(list); }

    void shade(PelkContext& context) override {
        context.surfaceProperties = &properties;
        if (!params.shows_matte_light)
            return findInterface<MaterialInterface>(params.base, EXT_MATERIAL)->shade(context);
        setOpaqueBlack(context);
        Color unshadowed, shadowed;
        context.renderer->sequenceData.giEngine->evalMatte(context, unshadowed, shadowed);
        context.resultColor = {unshadowed.r, shadowed.r, 0};
    }
    BSDFSampler* getBSDF(PelkContext&, int) override { return nullptr; }
    void releaseBSDF(PelkContext&, BSDFSampler*) override {}

    static PelkSurfaceProperties properties;

private:
    static constexpr ParamTable kParams{
        pluginParam("base", &Params::base, EXT_MATERIAL),
        boolParam("shows_matte_light", &Params::shows_matte_light, false),
    };
    Params params;
};

PelkSurfaceProperties TestSurface::properties;
HostPluginDesc<TestSurface> testSurfaceDesc;

class SurfacePropertiesTest : public RenderFixture {
protected:
    SurfacePropertiesTest() {
        session.getManager().registerPluginDesc(&testSurfaceDesc, session.getPluginHost());
        session.loadModules("", nullptr);  // lists the new kind
        reset();
    }
    static void reset() {
        PelkSurfaceProperties& p = TestSurface::properties;
        p.receive_gi = p.generate_caustics = p.receive_caustics = p.gi_quality_multiplier = 1;
        p.surfaceFlags = 3;
        p.reflectionExclude.clear();
    }
    /// A wall that fills the picture, of a base material in a TestSurface.
    static std::string wallOf(const std::string& base) {
        return R"("base": {)" + base + R"(}, "surface": {"type": "TestSurface", "base": "base"},
            "wall": {"type": "GeomQuad", "material": "surface", "width": 200, "height": 200},)";
    }
    static constexpr const char* kWhite = R"("type": "MtlDiffuse", "diffuse": [1, 1, 1])";
    static constexpr const char* kMirror =
        R"("type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1])";
    static constexpr const char* kWhiteSky = R"("background": [1, 1, 1])";
};

TEST_F(SurfacePropertiesTest, FactorsScaleIndirectLightAlone) {
    PelkSurfaceProperties& p = TestSurface::properties;
    const std::string wall = wallOf(kWhite);
    const std::string plain = wall + R"("none": {"type": "TexConstant"})";
    const std::string dome = wall + R"("dome": {"type": "LightDome"})";
    for (const float factor : {0.0f, 0.25f, 2.0f}) {
        p.receive_gi = factor;
        expectNear(meanOf(plain, kWhiteSky, 16), Color(factor), 0.01f);
        expectNear(meanOf(dome, "", 64), Color(1), 0.01f);
    }
    reset();
    // A mirror beside the wall fills half of what it sees.
    const std::string beside = R"("silver": {)" + std::string(kMirror) +
                               R"(}, "shiny": {"type": "TestSurface", "base": "silver"},
        "mirror": {"type": "GeomQuad", "material": "%s", "width": 900, "height": 900,
                   "rotate": [0, 90, 0], "translate": [-2, 0, 0]})";
    const auto sceneWith = [&](const char* material) {
        return wall + std::string(beside).replace(beside.find("%s"), 2, material);
    };
    p.generate_caustics = 0.0f;
    expectNear(meanOf(sceneWith("shiny"), kWhiteSky), Color(0.5f), 0.02f);
    reset();
    p.receive_caustics = 0.5f;
    expectNear(meanOf(sceneWith("silver"), kWhiteSky), Color(0.75f), 0.02f);
}

TEST_F(SurfacePropertiesTest, MoreRaysGiveTheSameLightWithLessNoise) {
    const std::string half =
        wallOf(kWhite) + R"("black": {"type": "MtlDiffuse", "diffuse": [0, 0, 0]},
        "beside": {"type": "GeomQuad", "material": "black", "width": 900, "height": 900,
                   "rotate": [0, 90, 0], "translate": [-2, 0, 0]})";
    const auto noiseWith = [&](float rays) {
        TestSurface::properties.gi_quality_multiplier = rays;
        const auto scene = read(half, kWhiteSky);
        Picture picture;
        render(*scene, picture, 4);
        const auto pixels = pixelsOf<Color>(picture, 0);
        expectNear(meanOf(pixels), Color(0.5f), 0.04f);
        double sum = 0;
        for (const Color& c : pixels)
            sum += (c.r - 0.5) * (c.r - 0.5);
        return sum;
    };
    const double one = noiseWith(1.0f), many = noiseWith(16.0f);
    EXPECT_LT(many, one / 8);
}

TEST_F(SurfacePropertiesTest, ReflectionsPassOverExcludedObjects) {
    const std::string scene =
        wallOf(kMirror) + R"("black": {"type": "MtlDiffuse", "diffuse": [0, 0, 0]},
        "curtain": {"type": "GeomQuad", "material": "black", "width": 900, "height": 900,
                    "rotate": [0, 180, 0], "translate": [0, 0, 9]})";
    const struct {
        const char* what;
        std::vector<int> ids;
        bool inclusive;
        float expected;
    } cases[] = {{"no table", {}, false, 0},        {"another object", {0, 7}, false, 0},
                 {"the curtain", {0, 1}, false, 1}, {"only the curtain", {1}, true, 0},
                 {"only another", {0}, true, 1},    {"only nothing", {}, true, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        reset();
        for (const int id : c.ids)
            TestSurface::properties.reflectionExclude.append(id);
        TestSurface::properties.surfaceFlags = c.inclusive ? u32{kReflectionListInclusive} : 0u;
        expectNear(meanOf(scene, kWhiteSky, 4), Color(c.expected), 1e-6f);
    }
}

TEST_F(SurfacePropertiesTest, MattesAreToldOfTheLightAroundTheScene) {
    const std::string scene = R"("surface": {"type": "TestSurface", "shows_matte_light": true},
        "wall": {"type": "GeomQuad", "material": "surface", "width": 200, "height": 200,
                 "rotate": [0, %s, 0]},
        "black": {"type": "MtlDiffuse", "diffuse": [0, 0, 0]},
        "beside": {"type": "GeomQuad", "material": "black", "width": 900, "height": 900,
                   "rotate": [0, 90, 0], "translate": [-2, 0, 0]},
        "dome": {"type": "LightDome"})";
    for (const char* turn : {"0", "180"}) {
        const std::string turned = std::string(scene).replace(scene.find("%s"), 2, turn);
        expectNear(meanOf(turned, R"("background": [0.5, 0, 0])"), Color(0.5f, 0.25f, 0), 0.01f);
        expectNear(meanOf(turned, R"("background": [0.5, 0, 0], "gi": false)", 4), Color(0), 0.0f);
    }
}

TEST_F(SurfacePropertiesTest, ABackplateIsSeenByTheCameraAlone) {
    const auto scene = read(R"("plate": {"type": "TexGradient"},
        "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
        "veil": {"type": "MtlDiffuse", "transparency": [0.5, 0.5, 0.5], "diffuse": [0, 0, 0]},
        "left": {"type": "GeomQuad", "material": "white", "width": 8, "height": 9,
                 "translate": [-4, 0, 0]},
        "right": {"type": "GeomQuad", "material": "veil", "height": 9, "translate": [1, 0, 0]},
        "dome": {"type": "LightDome", "intensity": 3})",
                            R"("background": [0.25, 0.25, 0.25], "backplate": "plate")");
    ASSERT_TRUE(scene);
    Picture picture;
    render(*scene, picture, 16);
    const auto pixels = pixelsOf<Color>(picture, 0);
    EXPECT_NEAR(pixels[9].r, 9.5f / 16, 0.02f);
    EXPECT_NEAR(pixels[15].r, 0.5f * 15.5f / 16, 0.02f) << "through a surface";
    EXPECT_NEAR(pixels[2].r, 3.25f, 0.2f) << "light comes from what surrounds the scene";
    directory.write("bad.json", R"({"settings": {"backplate": "white"},
        "plugins": {"white": {"type": "MtlDiffuse"}, "paper": {"type": "TexConstant"}}})");
    std::string error;
    EXPECT_FALSE(readScene(session, directory.file("bad.json"), {}, error));
    EXPECT_NE(error.find("/settings/backplate: expected the name of an instance with EXT_TEXTURE"),
              std::string::npos)
        << error;
}

TEST_F(SurfacePropertiesTest, TheOverrideOfHighestPriorityIsTheWorldOfAMirror) {
    const std::string scene = R"("red": {"type": "TexConstant", "color": [1, 0, 0]},
        "blue": {"type": "TexConstant", "color": [0, 0, 1]},
        "silver": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1]},
        "inner": {"type": "MtlOverride", "base_mtl": "silver", "use_environment_override": true,
                  "environment_override": "blue", "environment_priority": %s},
        "outer": {"type": "MtlOverride", "base_mtl": "inner", "use_environment_override": true,
                  "environment_override": "red", "environment_priority": 5},
        "wall": {"type": "GeomQuad", "material": "outer", "width": 200, "height": 200},
        "dome": {"type": "LightDome"})";
    const auto withPriority = [&](const char* priority) {
        return meanOf(std::string(scene).replace(scene.find("%s"), 2, priority), kWhiteSky, 4);
    };
    expectNear(withPriority("4"), Color(1, 0, 0), 0.0f);
    expectNear(withPriority("5"), Color(0, 0, 1), 0.0f);
}

TEST_F(SurfacePropertiesTest, LightsWithoutHighlightsAreNotSeenInGlossySurfaces) {
    const std::string wall = R"("bsdf": {"type": "BRDFGlossy", "roughness": 0.5},
        "mtl": {"type": "MtlSingleBRDF", "brdf": "bsdf"},
        "wall": {"type": "GeomQuad", "material": "mtl", "width": 200, "height": 200},
        "lamp": {"type": "LightSphere", "position": [0, 0, 9], "radius": 2, "affect_specular": )";
    expectNear(meanOf(wall + "false}", "", 16), Color(0), 0.0f);
    EXPECT_GT(meanOf(wall + "true}", "", 16).r, 0.05f);
}

}  // namespace
}  // namespace Tarnkit
