// The host's own BSDFs, by what pictures of them must show.

#include "host/render/render_fixture.h"

namespace Tarnkit {
namespace {

using GlossyTest = RenderFixture;

std::string ballOf(const std::string& bsdf) {
    return R"("bsdf": {)" + bsdf + R"(}, "mtl": {"type": "MtlSingleBRDF", "brdf": "bsdf"},
              "ball": {"type": "GeomSphere", "material": "mtl", "radius": 1.5})";
}

TEST_F(GlossyTest, WhiteInWhiteSurroundingsIsWhite) {
    const char* cases[] = {
        R"("type": "BRDFGlossy", "roughness": 0)",
        R"("type": "BRDFGlossy", "roughness": 0.2)",
        R"("type": "BRDFGlossy", "roughness": 0.5, "tail": 4)",
        R"("type": "BSDFGlass")",
        R"("type": "BSDFGlass", "roughness": 0.1, "ior": 2)",
    };
    for (const char* bsdf : cases) {
        SCOPED_TRACE(bsdf);
        expectNear(meanOf(ballOf(bsdf), R"("max_depth": 40, "background": [1, 1, 1])", 64),
                   Color(1), 0.02f);
        // Lights are looked for twice, and every place of them counts once.
        expectNear(
            meanOf(ballOf(bsdf) + R"(, "dome": {"type": "LightDome"})", R"("max_depth": 40)", 64),
            Color(1), 0.02f);
    }
}

TEST_F(GlossyTest, GlassThatPassesShadowsCountsLightOnce) {
    // All is inside a ball of glass that neither bends nor mirrors: as if it weren't there.
    const std::string wall = R"("white": {"type": "MtlDiffuse", "diffuse": [0.8, 0.8, 0.8]},
        "metal": {"type": "BRDFGlossy", "roughness": 0.5, "ior": 30},
        "sheen": {"type": "MtlSingleBRDF", "brdf": "metal"},
        "wall": {"type": "GeomQuad", "width": 40, "height": 40, "material": )";
    const std::string glass = R"(, "clear": {"type": "BSDFGlass", "ior": 1, "pass_shadows": %PASS%},
        "shell": {"type": "MtlSingleBRDF", "brdf": "clear"},
        "ball": {"type": "GeomSphere", "material": "shell", "radius": 9})";
    const std::string lights[] = {
        R"(}, "light": {"type": "LightDome", "intensity": 0.7})",
        R"(}, "light": {"type": "LightSun", "direction": [1, 0, -1], "angle": 60})",
        R"(}, "light": {"type": "LightArea", "position": [0, 5, 20], "direction": [0, 0, -1],
                        "width": 40, "height": 40, "shadows": %SHADOWS%})"};
    const struct {
        const char *pass, *shadows, *material, *settings;
    } cases[] = {
        {"true", "true", R"("white")", R"("max_depth": 9)"},
        {"true", "true", R"("sheen")", R"("max_depth": 9)"},
        {"true", "true", R"("white")", R"("max_depth": 9, "reflective_gi": false)"},
        {"true", "true", R"("white")", R"("gi": false)"},
        {"true", "false", R"("white")", R"("max_depth": 9)"},
        {"false", "true", R"("white")", R"("max_depth": 9)"},
    };
    for (const auto& c : cases) {
        for (const std::string& light : lights) {
            std::string plugins = wall + c.material + light + glass;
            plugins.replace(plugins.find("%PASS%"), 6, c.pass);
            if (const auto at = plugins.find("%SHADOWS%"); at != plugins.npos)
                plugins.replace(at, 9, c.shadows);
            SCOPED_TRACE(plugins + c.settings);
            const Color bare =
                meanOf(plugins.substr(0, plugins.find(R"(, "clear")")), c.settings, 64);
            EXPECT_GT(bare.g, 0.05f);
            expectNear(meanOf(plugins, c.settings, 64), bare, 0.02f * bare.g);
        }
    }
}

TEST_F(GlossyTest, ACoatMirrorsByItsIndexAndLetsTheRestThrough) {
    const std::string wall = R"("coat": {"type": "BRDFGlossy", "roughness": 0.3, "ior": 1.5},
        "wall": {"type": "GeomQuad", "material": "mtl", "width": 9, "height": 9})";
    const char* mtl = R"(, "mtl": {"type": "MtlSingleBRDF", "brdf": "coat", "double_sided": )";
    const char* white = R"("background": [1, 1, 1])";
    expectNear(meanOf(wall + mtl + "0}", white), Color(0.04f), 0.003f);

    const std::string turned = wall.substr(0, wall.size() - 1) + R"(, "rotate": [0, 180, 0]})";
    expectNear(meanOf(turned + mtl + "1}", white), Color(0.04f), 0.003f);
    expectNear(meanOf(turned + mtl + "0}", white), Color(0), 0.0f);
}

TEST_F(GlossyTest, AGlassBallTurnsTheWorldUpsideDown) {
    const auto scene = read(ballOf(R"("type": "BSDFGlass")") + R"(,
        "map": {"type": "UVWGenEnvironment"},
        "sky": {"type": "TexGradient", "form": 1, "color1": [0, 0, 1], "color2": [1, 0, 0],
                "uvwgen": "map"},
        "dome": {"type": "LightDome", "texture": "sky"})",
                            R"("max_depth": 40)");
    ASSERT_TRUE(scene);
    Picture picture;
    render(*scene, picture, 64);
    const auto pixels = pixelsOf<Color>(picture, 0);
    const Color lowerHalf = meanOf({pixels.begin() + 128, pixels.end()});
    EXPECT_GT(lowerHalf.r, lowerHalf.b + 0.05f);
}

}  // namespace
}  // namespace Tarnkit
