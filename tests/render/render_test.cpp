// Pictures, by what must hold of them: rendered with the built module, as any host would.

#include "render_fixture.h"

namespace Tarnkit {
namespace {

using RenderTest = RenderFixture;

TEST_F(RenderTest, AWhiteSurfaceInWhiteSurroundingsIsWhite) {
    const std::string base = R"("base": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},)",
                      ball = R"("ball": {"type": "GeomSphere", "radius": 3, "material": )",
                      dome = R"(, "dome": {"type": "LightDome"})";
    const auto expectWhite = [&](const char* what, const std::string& plugins,
                                 const char* background = "") {
        SCOPED_TRACE(what);
        const std::string settings = R"("max_depth": 50)";
        expectNear(meanOf(base + plugins, settings + background), Color(1), 0.005f);
    };
    expectWhite("a dome that is sampled and met", ball + R"("base"})" + dome);
    expectWhite("plain surroundings, met by indirect rays alone", ball + R"("base"})",
                R"(, "background": [1, 1, 1])");
    expectWhite(
        "by the road of samplers",
        R"("white": {"type": "MtlSingleBRDF", "brdf": "base"},)" + ball + R"("white"})" + dome);
    expectWhite(
        "a mirror",
        R"("white": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1]},)" +
            ball + R"("white"})" + dome);
    expectWhite(
        "half transparent, half diffuse",
        R"("white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1], "transparency": [0.5, 0.5, 0.5]},
            "quad": {"type": "GeomQuad", "material": "white", "width": 9, "height": 9})" +
            dome);
    expectWhite("layers: what a coat mirrors, it takes from the base",
                R"("clear": {"type": "MtlRenderStats", "visibility": 0},
            "coat": {"type": "BRDFGlossy", "roughness": 0, "ior": 1.5},
            "white": {"type": "MtlLayeredBRDF", "brdfs": ["clear", "coat", "base"]},)" +
                    ball + R"("white"})" + dome);
}

TEST_F(RenderTest, AThinSurfaceShowsTheLightOfBothSides) {
    const std::string sheet =
        R"("red": {"type": "MtlDiffuse", "diffuse": [1, 0, 0]},
           "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
           "leaf": {"type": "Mtl2Sided", "front": "red", "back": "white",
                    "translucency": [0.25, 0.25, 0.25], "mult_by_front_diffuse": %MULT%},
           "sheet": {"type": "GeomQuad", "material": "leaf", "width": 9, "height": 9,
                     "rotate": [0, %TURN%, 0]},)";
    const char* none = R"("none": {"type": "MtlDiffuse"})";
    const char* white = R"("max_depth": 5, "background": [1, 1, 1])";
    const char* dome = R"("light": {"type": "LightDome"})";
    const char* behind = R"("light": {"type": "LightSun", "direction": [0, 0, 1], "angle": 5})";
    const struct {
        const char* what;
        const char *turn, *multiply, *light, *settings;
        Color expected;
    } cases[] = {
        {"all around", "0", "false", dome, R"("max_depth": 5)", {1, 0.25f, 0.25f}},
        {"the back, all around", "180", "false", dome, R"("max_depth": 5)", {1, 0.75f, 0.75f}},
        {"by samples alone", "0", "false", dome, R"("gi": false)", {1, 0.25f, 0.25f}},
        {"by indirect rays alone", "0", "false", none, white, {1, 0.25f, 0.25f}},
        {"the back, by those", "180", "false", none, white, {1, 0.75f, 0.75f}},
        {"light behind", "0", "false", behind, R"("gi": false)", Color(0.25f)},
        {"and with indirect rays", "180", "false", behind, R"("max_depth": 5)", {0.25f, 0, 0}},
        {"through the front's colour", "0", "true", behind, R"("gi": false)", {0.25f, 0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::string plugins = sheet + c.light;
        plugins.replace(plugins.find("%MULT%"), 6, c.multiply);
        plugins.replace(plugins.find("%TURN%"), 6, c.turn);
        expectNear(meanOf(plugins, c.settings), c.expected, 0.005f);
    }
}

TEST_F(RenderTest, ShadowsAreFilteredByWhatStandsInTheWay) {
    const char* scene = R"(
        "grey": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
        "wall": {"type": "GeomQuad", "material": "grey", "width": 40, "height": 40},
        "film": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "transparency": [1, 0.5, 0]},
        "first": {"type": "GeomQuad", "material": "film", "width": 60, "height": 60,
                  "translate": [0, 0, 20]},
        "second": {"type": "GeomQuad", "material": "film", "width": 60, "height": 60,
                   "translate": [0, 0, 21], "rotate": [0, 180, 0]},
        "sun": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0, "shadows": SHADOWS})";
    for (const bool shadows : {true, false}) {
        std::string text = scene;
        text.replace(text.find("SHADOWS"), 7, shadows ? "true" : "false");
        expectNear(meanOf(text, R"("gi": false)", 4), shadows ? Color(1, 0.25f, 0) : Color(1),
                   1e-5f);
    }
}

TEST_F(RenderTest, LightWithoutShadowsComesInFullThroughWhatStandsInTheWay) {
    const auto floorUnderLid = [](const char* material, const char* light) {
        return std::string(R"("white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
            "black": {"type": "MtlDiffuse", "diffuse": [0, 0, 0]},
            "open": {"type": "MtlRenderStats", "base_mtl": "white", "shadows_receive": false},
            "wall": {"type": "GeomQuad", "width": 50, "height": 50, "material": ")") +
               material + R"("},
            "lid": {"type": "GeomQuad", "width": 50, "height": 50, "material": "black",
                    "translate": [0, 0, 9]},
            "dome": {"type": "LightDome")" +
               light + "}";
    };
    expectNear(meanOf(floorUnderLid("white", R"(, "shadows": false)"), "", 64), Color(1), 0.02f);
    expectNear(meanOf(floorUnderLid("open", ""), "", 64), Color(1), 0.02f);
    EXPECT_LT(meanOf(floorUnderLid("white", ""), "", 64).r, 0.3f);
}

TEST_F(RenderTest, BothWaysOfFindingALightAgree) {
    // A light that fills much of the hemisphere, close to a wall: by its samples alone (no indirect
    // rays), and weighted against indirect rays, at one surface.
    const char* plugins = R"(
        "grey": {"type": "MtlDiffuse", "diffuse": [0.8, 0.8, 0.8]},
        "wall": {"type": "GeomQuad", "material": "grey", "width": 40, "height": 40},
        "light": {"type": "LightArea", "position": [0, 3, 2], "direction": [0, -1, -1], "width": 4,
                  "height": 3, "intensity": 2, "visible": false})";
    const Color sampled = meanOf(plugins, R"("gi": false)", 1024);
    const Color weighted = meanOf(plugins, R"("max_depth": 1)", 1024);
    EXPECT_GT(sampled.r, 0.1f);
    expectNear(weighted, sampled, 0.005f * sampled.r);
}

TEST_F(RenderTest, ManyLightsOfWhichSomeAreChosenGiveTheSameLight) {
    std::string few = R"("grey": {"type": "MtlDiffuse"},
        "wall": {"type": "GeomQuad", "material": "grey", "width": 40, "height": 40})";
    std::string many = few;
    few += R"(, "sun": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0, "intensity": 10})";
    for (int i = 0; i < 200; ++i)
        many +=
            ", \"sun" + std::to_string(i) +
            R"(": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0, "intensity": 0.05})";
    const Color expected = meanOf(few, R"("gi": false)", 4);
    expectNear(meanOf(many, R"("gi": false)", 4), expected, 1e-3f);
}

TEST_F(RenderTest, DepthCountsTheSurfacesThatGatherLight) {
    // A mirror at the last surface still shows what shines on it.
    const char* box = R"(
        "mirror": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1]},
        "front": {"type": "GeomQuad", "material": "mirror", "width": 50, "height": 50})";
    expectNear(meanOf(box, R"("max_depth": 1, "background": [1, 1, 1])", 1), Color(1), 0);
    // A room without light but a sky behind the camera: one bounce more each time is brighter.
    const char* bowl = R"("white": {"type": "MtlDiffuse", "diffuse": [0.9, 0.9, 0.9]},
        "back": {"type": "GeomQuad", "material": "white", "width": 50, "height": 50},
        "left": {"type": "GeomQuad", "material": "white", "width": 50, "height": 50,
                 "rotate": [0, 90, 0], "translate": [-2, 0, 0]})";
    float last = 0;
    for (const char* depth : {"1", "2", "3"}) {
        const float now =
            meanOf(bowl, std::string(R"("background": [1, 1, 1], "max_depth": )") + depth).r;
        EXPECT_GT(now, last + 0.02f);
        last = now;
    }
}

TEST_F(RenderTest, BadScenesAreRefusedByName) {
    const auto scene = read(R"("lamp": {"type": "LightSphere", "radius": 0})", "");
    ASSERT_TRUE(scene);
    EXPECT_EQ(errorOf(*scene, {}), "/plugins/lamp: radius must be above 0");
}

TEST_F(RenderTest, ColoursThatAreNotFiniteAreDroppedAndNamed) {
    const auto scene = read(R"(
        "light": {"type": "RenderChannel", "channel_name": "my_light"},
        "hot": {"type": "MtlDiffuse", "diffuse": [3e38, 3e38, 3e38], "render_channel_color": "light"},
        "wall": {"type": "GeomQuad", "material": "hot", "width": 1.5, "height": 50},
        "sun": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0, "intensity": 3e38})",
                            R"("background": [1, 1, 1])");
    ASSERT_TRUE(scene);
    Picture picture;
    const RenderResult result = render(*scene, picture, 4);
    EXPECT_GT(result.droppedSamples, 0);
    EXPECT_EQ(result.droppedBy, "hot");
    // Where only some samples hit the wall, the others alone count.
    for (const Color& color : pixelsOf<Color>(picture, 0))
        ASSERT_TRUE(color == Color(0) || color == Color(1)) << color.r;
    for (const Color& color : pixelsOf<Color>(picture, 2))
        ASSERT_TRUE(isFinite(color)) << "a channel drops them too";
}

}  // namespace
}  // namespace Tarnkit
