// What surfaces ask of the renderer as a whole, and what lies behind the scene.

#include "host/render/render_fixture.h"

namespace Tarnkit {
namespace {

class SurfacePropertiesTest : public RenderFixture {
protected:
    /// A wall that fills the picture: a base material with properties, `parameters` of MtlWrapper.
    static std::string wallOf(const std::string& base, const std::string& parameters,
                              const std::string& turn = "0") {
        return R"("base": {)" + base +
               R"(}, "surface": {"type": "MtlWrapper", "base_material": "base")" + parameters +
               R"(}, "wall": {"type": "GeomQuad", "material": "surface", "width": 200,
                              "height": 200, "rotate": [0, )" +
               turn + ", 0]}";
    }
    /// A large sheet beside the wall, which fills half of what the wall sees.
    static std::string sheetOf(const std::string& material) {
        return R"(, "sheet": {"type": "GeomQuad", "width": 900, "height": 900,
                              "rotate": [0, 90, 0], "translate": [-2, 0, 0], "material": ")" +
               material + "\"}";
    }

    static constexpr const char* kWhite = R"("type": "MtlDiffuse", "diffuse": [1, 1, 1])";
    static constexpr const char* kMirror =
        R"("type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1])";
    static constexpr const char* kBlack =
        R"(, "black": {"type": "MtlDiffuse", "diffuse": [0, 0, 0]})";
    static constexpr const char* kWhiteSky = R"("background": [1, 1, 1])";
};

TEST_F(SurfacePropertiesTest, FactorsScaleIndirectLightAlone) {
    const std::string wall = wallOf(kWhite, R"(, "receive_gi": 0.25)");
    expectNear(meanOf(wall, kWhiteSky, 16), Color(0.25f), 0.01f);
    expectNear(meanOf(wall + R"(, "dome": {"type": "LightDome"})", "", 64), Color(1), 0.01f);
    const std::string moreRays = wallOf(kWhite, R"(, "gi_quality_multiplier": 16)");
    expectNear(meanOf(moreRays, kWhiteSky, 4), Color(1), 0.01f);
    const std::string silver = R"(, "silver": {)" + std::string(kMirror) + "}" +
                               R"(, "shiny": {"type": "MtlWrapper", "base_material": "silver",
                                              "generate_caustics": 0})";
    expectNear(meanOf(wallOf(kWhite, "") + silver + sheetOf("shiny"), kWhiteSky), Color(0.5f),
               0.02f);
    expectNear(meanOf(wallOf(kWhite, R"(, "receive_caustics": 0.5)") + silver + sheetOf("silver"),
                      kWhiteSky),
               Color(0.75f), 0.02f);
}

TEST_F(SurfacePropertiesTest, ReflectionsPassOverExcludedObjects) {
    const std::string curtain = std::string(kBlack) + R"(,
        "curtain": {"type": "GeomQuad", "material": "black", "width": 900, "height": 900,
                    "rotate": [0, 180, 0], "translate": [0, 0, 9]})";
    const auto reflected = [&](const char* list) {
        return meanOf(wallOf(kMirror, std::string(R"(, "reflection_exclude": )") + list) + curtain,
                      kWhiteSky, 4);
    };
    expectNear(reflected(R"(["wall"])"), Color(0), 0);
    expectNear(reflected(R"(["wall", "curtain"])"), Color(1), 0);
    expectNear(reflected(R"(["wall"], "reflection_list_is_inclusive": true)"), Color(1), 0);
}

TEST_F(SurfacePropertiesTest, MattesCatchTheShadowsOfWhatSurroundsTheScene) {
    const char* sky = R"("background": [0.5, 0, 0])";
    for (const char* turn : {"0", "180"}) {
        const std::string scene =
            wallOf(kWhite, R"(, "matte_surface": true, "shadows": true)", turn) + kBlack +
            sheetOf("black");
        expectNear(meanOf(scene, sky), Color(0.25f, 0, 0), 0.01f);
        expectNear(meanOf(scene, std::string(sky) + R"(, "gi": false)", 4), Color(0.5f, 0, 0), 0);
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
}

TEST_F(SurfacePropertiesTest, APictureIsTheSameWhereverTheCamerasSpaceLies) {
    // A matte seen in a mirror shows what the camera has behind it there.
    const char* const plugins = R"("map": {"type": "UVWGenEnvironment"},
        "sky": {"type": "TexGradient", "form": 1, "uvwgen": "map"},
        "dome": {"type": "LightDome", "texture": "sky"},
        "silver": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1]},
        "ball": {"type": "GeomSphere", "material": "silver"},
        "matte": {"type": "MtlWrapper", "base_material": "silver", "matte_surface": true,
                  "matte_for_secondary_rays": 2},
        "floor": {"type": "GeomQuad", "material": "matte", "width": 9, "height": 9,
                  "rotate": [-90, 0, 0], "translate": [0, -1, 0]},
        "far": {"type": "CameraPerspective", "fov": 30, "position": [64, -256, 1029],
                "target": [64, -256, 1024]})";
    std::vector<Color> beauty[2];
    std::vector<float> depth[2];
    for (const int moved : {0, 1}) {
        const auto scene = read(plugins, moved ? R"("camera": "far", "origin": [64, -256, 1024])"
                                               : R"("camera": "camera")");
        ASSERT_TRUE(scene);
        RenderOptions options = optionsOf(4);
        options.channels = {"depth"};
        Picture picture;
        render(*scene, picture, options);
        beauty[moved] = pixelsOf<Color>(picture, 0);
        depth[moved] = pixelsOf<float>(picture, 2);
    }
    EXPECT_EQ(beauty[0], beauty[1]);
    for (std::size_t i = 0; i < depth[0].size(); ++i)
        EXPECT_NEAR(depth[0][i], depth[1][i], 1e-5f);
}

TEST_F(SurfacePropertiesTest, TheOverrideOfHighestPriorityIsTheWorldOfAMirror) {
    const std::string scene = R"("red": {"type": "TexConstant", "color": [1, 0, 0]},
        "blue": {"type": "TexConstant", "color": [0, 0, 1]},
        "silver": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1]},
        "outer": {"type": "MtlOverride", "base_mtl": "inner", "use_environment_override": true,
                  "environment_override": "red", "environment_priority": 5},
        "wall": {"type": "GeomQuad", "material": "outer", "width": 200, "height": 200},
        "inner": {"type": "MtlOverride", "base_mtl": "silver", "use_environment_override": true,
                  "environment_override": "blue", "environment_priority": )";
    expectNear(meanOf(scene + "4}", kWhiteSky, 4), Color(1, 0, 0), 0.0f);
    expectNear(meanOf(scene + "5}", kWhiteSky, 4), Color(0, 0, 1), 0.0f);
}

TEST_F(SurfacePropertiesTest, LightsWithoutHighlightsAreNotSeenInGlossySurfaces) {
    const std::string wall = R"("bsdf": {"type": "BRDFGlossy", "roughness": 0.5},
        "mtl": {"type": "MtlSingleBRDF", "brdf": "bsdf"},
        "wall": {"type": "GeomQuad", "material": "mtl", "width": 200, "height": 200},
        "lamp": {"type": "LightSphere", "position": [0, 0, 9], "radius": 2, "affect_specular": )";
    expectNear(meanOf(wall + "false}", "", 16), Color(0), 0.0f);
    EXPECT_GT(meanOf(wall + "true}", "", 64).r, 0.05f);
}

}  // namespace
}  // namespace Tarnkit
