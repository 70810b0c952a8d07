// What surfaces ask of the renderer as a whole, and what lies behind the scene.

#include "host/render/render_fixture.h"

namespace Tarnkit {
namespace {

class SurfacePropertiesTest : public RenderFixture {
protected:
    /// A wall of a base material with `parameters` of MtlWrapper.
    static std::string wrapped(const std::string& base, const std::string& parameters,
                               const std::string& placed = "") {
        return R"("surface": {"type": "MtlWrapper", "base_material": ")" + base + "\"" +
               parameters + "}, " + wallOf("surface", placed);
    }
    /// A large sheet beside the wall, which fills half of what the wall sees.
    static std::string sheetOf(const std::string& material) {
        return R"(, "sheet": {"type": "GeomQuad", "width": 900, "height": 900,
                              "rotate": [0, 90, 0], "translate": [-2, 0, 0], "material": ")" +
               material + "\"}";
    }

    static constexpr const char* kWhiteSky = R"("background": [1, 1, 1])";
};

TEST_F(SurfacePropertiesTest, FactorsScaleIndirectLightAlone) {
    const std::string wall = wrapped("white", R"(, "receive_gi": 0.25)");
    expectNear(meanOf(wall, kWhiteSky, 16), Color(0.25f), 0.01f);
    expectNear(meanOf(wall + R"(, "dome": {"type": "LightDome"})", "", 64), Color(1), 0.01f);
    const std::string moreRays = wrapped("white", R"(, "gi_quality_multiplier": 16)");
    expectNear(meanOf(moreRays, kWhiteSky, 4), Color(1), 0.01f);
    const std::string shiny = R"(, "shiny": {"type": "MtlWrapper", "base_material": "silver",
                                             "generate_caustics": 0})";
    expectNear(meanOf(wallOf("white") + shiny + sheetOf("shiny"), kWhiteSky), Color(0.5f), 0.02f);
    const std::string half = wrapped("white", R"(, "receive_caustics": 0.5)");
    expectNear(meanOf(half + sheetOf("silver"), kWhiteSky), Color(0.75f), 0.02f);
}

TEST_F(SurfacePropertiesTest, MirrorsShowTheWorldThatIsMeantForThem) {
    const std::string curtain = R"(, "curtain": {"type": "GeomQuad", "material": "black",
        "width": 900, "height": 900, "rotate": [0, 180, 0], "translate": [0, 0, 9]})";
    const auto expectMirrored = [&](const std::string& scene, Color expected) {
        SCOPED_TRACE(scene);
        expectNear(meanOf(scene, kWhiteSky, 4), expected, 0);
    };
    for (const auto& [excluded, expected] :
         {std::pair(R"(["wall"])", 0.0f), std::pair(R"(["wall", "curtain"])", 1.0f),
          std::pair(R"(["wall"], "reflection_list_is_inclusive": true)", 1.0f)})
        expectMirrored(
            wrapped("silver", std::string(R"(, "reflection_exclude": )") + excluded) + curtain,
            Color(expected));

    const std::string overrides = wallOf("outer") + R"(,
        "red": {"type": "TexConstant", "color": [1, 0, 0]},
        "blue": {"type": "TexConstant", "color": [0, 0, 1]},
        "outer": {"type": "MtlOverride", "base_mtl": "inner", "use_environment_override": true,
                  "environment_override": "red", "environment_priority": 5},
        "inner": {"type": "MtlOverride", "base_mtl": "silver", "use_environment_override": true,
                  "environment_override": "blue", "environment_priority": )";
    expectMirrored(overrides + "4}", Color(1, 0, 0));
    expectMirrored(overrides + "5}", Color(0, 0, 1));
}

TEST_F(SurfacePropertiesTest, MattesCatchTheShadowsOfWhatSurroundsTheScene) {
    const std::string sky = R"("background": [0.5, 0, 0])";
    for (const char* turn : {"", R"(, "rotate": [0, 180, 0])"}) {
        const std::string scene =
            wrapped("white", R"(, "matte_surface": true, "shadows": true)", turn) +
            sheetOf("black");
        expectNear(meanOf(scene, sky), Color(0.25f, 0, 0), 0.01f);
        expectNear(meanOf(scene, sky + R"(, "gi": false)", 4), Color(0.5f, 0, 0), 0);
    }
}

TEST_F(SurfacePropertiesTest, ABackplateIsSeenByTheCameraAlone) {
    render(R"("plate": {"type": "TexGradient"},
        "veil": {"type": "MtlDiffuse", "transparency": [0.5, 0.5, 0.5], "diffuse": [0, 0, 0]},
        "left": {"type": "GeomQuad", "material": "white", "width": 8, "height": 9,
                 "translate": [-4, 0, 0]},
        "right": {"type": "GeomQuad", "material": "veil", "height": 9, "translate": [1, 0, 0]},
        "dome": {"type": "LightDome", "intensity": 3})",
           R"("background": [0.25, 0.25, 0.25], "backplate": "plate")", optionsOf(16));
    const auto pixels = pixelsOf(picture);
    EXPECT_NEAR(pixels[9].r, 9.5f / 16, 0.02f);
    EXPECT_NEAR(pixels[15].r, 0.5f * 15.5f / 16, 0.02f) << "through a surface";
    EXPECT_NEAR(pixels[2].r, 3.0f, 0.2f) << "light comes from what surrounds the scene";
}

TEST_F(SurfacePropertiesTest, APictureIsTheSameWhereverTheCamerasSpaceLies) {
    // A matte seen in a mirror shows what the camera has behind it there.
    const char* const plugins = R"("map": {"type": "UVWGenEnvironment"},
        "sky": {"type": "TexGradient", "form": 1, "uvwgen": "map"},
        "dome": {"type": "LightDome", "texture": "sky"},
        "ball": {"type": "GeomSphere", "material": "silver"},
        "matte": {"type": "MtlWrapper", "base_material": "silver", "matte_surface": true,
                  "matte_for_secondary_rays": 2},
        "floor": {"type": "GeomQuad", "material": "matte", "width": 9, "height": 9,
                  "rotate": [-90, 0, 0], "translate": [0, -1, 0]},
        "far": {"type": "CameraPerspective", "fov": 30, "position": [64, -256, 1029],
                "target": [64, -256, 1024]})";
    render(plugins, R"("camera": "camera")", optionsOf(4, 16, 16, {"depth"}));
    const auto beauty = pixelsOf(picture);
    const auto depth = pixelsOf<float>(picture, 2);
    render(plugins, R"("camera": "far", "origin": [64, -256, 1024])",
           optionsOf(4, 16, 16, {"depth"}));
    EXPECT_EQ(pixelsOf(picture), beauty);
    EXPECT_THAT(pixelsOf<float>(picture, 2), testing::Pointwise(testing::FloatNear(1e-5f), depth));
}

TEST_F(SurfacePropertiesTest, LightsWithoutHighlightsAreNotSeenInGlossySurfaces) {
    const std::string wall = wallOf("mtl") + R"(, "bsdf": {"type": "BRDFGlossy", "roughness": 0.5},
        "mtl": {"type": "MtlSingleBRDF", "brdf": "bsdf"},
        "lamp": {"type": "LightSphere", "position": [0, 0, 9], "radius": 2, "affect_specular": )";
    expectNear(meanOf(wall + "false}", "", 16), Color(0), 0.0f);
    EXPECT_GT(meanOf(wall + "true}", "", 64).r, 0.05f);
}

}  // namespace
}  // namespace Tarnkit
