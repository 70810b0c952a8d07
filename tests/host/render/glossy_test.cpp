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
