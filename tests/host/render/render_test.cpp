// Pictures, by what must hold of them: rendered with the built module, as any host would.

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <sstream>

#include "host/plugins/plugin_holder.h"
#include "host/render/render_fixture.h"
#include "pelk/host/plugins/tex_noise.h"

namespace Tarnkit {
namespace {

using RenderTest = RenderFixture;

TEST_F(RenderTest, AWhiteSurfaceInWhiteSurroundingsIsWhite) {
    const std::string base = R"("base": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
        "scaled": {"type": "MtlWrapper", "base_material": "base", "receive_gi": 0.999},
        "clear": {"type": "MtlRenderStats", "visibility": 0},
        "coat": {"type": "BRDFGlossy", "roughness": 0, "ior": 1.5},
        "ball": {"type": "GeomSphere", "radius": 3, "material": "white"}, "white": {"type": )";
    const struct {
        const char *what, *material;
    } cases[] = {
        {"directly", R"("MtlDiffuse", "diffuse": [1, 1, 1])"},
        {"by the road of samplers", R"("MtlSingleBRDF", "brdf": "base")"},
        {"a mirror", R"("MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1])"},
        {"what a coat mirrors, it takes from the base",
         R"("MtlLayeredBRDF", "brdfs": ["clear", "coat", "base"])"},
        {"sides that differ", R"("Mtl2Sided", "front": "base", "back": "scaled")"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string ball = base + c.material + "}";
        // Surroundings that are sampled and met, and those that indirect rays alone meet.
        expectNear(meanOf(ball + R"(, "dome": {"type": "LightDome"})", R"("max_depth": 50)"),
                   Color(1), 0.005f);
        expectNear(meanOf(ball, R"("max_depth": 50, "background": [1, 1, 1])"), Color(1), 0.005f);
    }
}

TEST_F(RenderTest, AThinSurfaceShowsTheLightOfBothSides) {
    const std::string sheet =
        R"("red": {"type": "MtlDiffuse", "diffuse": [1, 0, 0]},
           "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
           "leaf": {"type": "Mtl2Sided", "front": "red", "back": "white",
                    "translucency": [0.25, 0.25, 0.25], "mult_by_front_diffuse": %MULT%},
           "sheet": {"type": "GeomQuad", "material": "leaf", "width": 9, "height": 9,
                     "rotate": [0, %TURN%, 0]}, "light": )";
    const char* dome = R"({"type": "LightDome"})";
    const char* behind = R"({"type": "LightSun", "direction": [0, 0, 1], "angle": 5})";
    const struct {
        const char *turn, *multiply, *light, *settings;
        Color expected;
    } cases[] = {
        {"0", "false", dome, R"("max_depth": 5)", {1, 0.25f, 0.25f}},
        {"180", "false", dome, R"("max_depth": 5)", {1, 0.75f, 0.75f}},
        {"180", "false", behind, R"("max_depth": 5)", {0.25f, 0, 0}},
        {"0", "true", behind, R"("gi": false)", {0.25f, 0, 0}},
    };
    for (const auto& c : cases) {
        std::string plugins = sheet + c.light;
        plugins.replace(plugins.find("%MULT%"), 6, c.multiply);
        plugins.replace(plugins.find("%TURN%"), 6, c.turn);
        SCOPED_TRACE(plugins + c.settings);
        expectNear(meanOf(plugins, c.settings), c.expected, 0.005f);
    }
}

TEST_F(RenderTest, ShadowsAreFilteredByWhatStandsInTheWayUnlessTheyAreOff) {
    const std::string scene = R"(
        "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
        "open": {"type": "MtlRenderStats", "base_mtl": "white", "shadows_receive": false},
        "film": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "transparency": [1, 0.5, 0]},
        "first": {"type": "GeomQuad", "material": "film", "width": 90, "height": 90,
                  "translate": [0, 0, 20]},
        "second": {"type": "GeomQuad", "material": "film", "width": 90, "height": 90,
                   "translate": [0, 0, 21], "rotate": [0, 180, 0]},
        "sun": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0, "shadows": )";
    const std::string wall = R"(}, "wall": {"type": "GeomQuad", "width": 40, "height": 40,
                                            "material": )";
    const auto lit = [&](const std::string& shadows, const std::string& material) {
        return meanOf(scene + shadows + wall + material + "}", R"("gi": false)", 4);
    };
    expectNear(lit("true", R"("white")"), Color(1, 0.25f, 0), 1e-5f);
    expectNear(lit("true", R"("open")"), Color(1), 1e-5f);
    expectNear(lit("false", R"("white")"), Color(1), 1e-5f);
}

/// The bump of the test below as geometry: a ball of radius 1, each point of it raised along its
/// normal by `height` times the noise there.
std::string raisedBall(PluginHolder<TexNoise>& noise, float height) {
    constexpr int kRows = 120, kColumns = 240;
    std::ostringstream ply;
    ply << "ply\nformat ascii 1.0\nelement vertex " << (kRows + 1) * kColumns
        << "\nproperty float x\nproperty float y\nproperty float z\nelement face "
        << kRows * kColumns << "\nproperty list uchar int vertex_indices\nend_header\n";
    PelkContext context;
    for (int i = 0; i < (kRows + 1) * kColumns; ++i) {
        const float down = std::numbers::pi_v<float> * static_cast<float>(i / kColumns) / kRows;
        const float around =
            std::numbers::pi_v<float> * 2 * static_cast<float>(i % kColumns) / kColumns;
        const Vector n{std::sin(down) * std::cos(around), std::cos(down),
                       -std::sin(down) * std::sin(around)};
        context.hitPoint = Point() + n;
        const Vector p = n * (1 + height * (noise.plugin.getTexFloat(context) - 0.5f));
        ply << p.x << ' ' << p.y << ' ' << p.z << '\n';
    }
    for (int i = 0; i < kRows * kColumns; ++i) {
        const int next = i % kColumns == kColumns - 1 ? i - kColumns + 1 : i + 1;
        ply << "4 " << i << ' ' << i + kColumns << ' ' << next + kColumns << ' ' << next << '\n';
    }
    return ply.str();
}

TEST_F(RenderTest, ABumpedBallIsLitAsOneOfThatShape) {
    PluginHolder<TexNoise> noise;
    noise.set("octaves", 1);
    noise.set("size", 0.5f);
    noise.startFrame();
    directory.write("raised.ply", raisedBall(noise, 0.06f));
    const auto blocksOf = [&](const std::string& ball) {
        const auto scene = read(R"("white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
            "near": {"type": "CameraPerspective", "position": [0, 0, 5], "fov": 12},
            "sun": {"type": "LightSun", "direction": [-0.8, 0.4, -1], "angle": 0},
            "noise": {"type": "TexNoise", "octaves": 1, "size": 0.5},
            "bump": {"type": "MtlBump", "base_mtl": "white", "bump_tex_color": "noise",
                     "bump_tex_mult": 0.06, "map_type": )" +
                                    ball,
                                R"("gi": false, "camera": "near")");
        Picture picture;
        render(*scene, picture, optionsOf(4, 128, 128));
        const auto pixels = pixelsOf<Color>(picture, 0);
        std::vector<float> sums(16);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            sums[i / 128 / 32 * 4 + i % 128 / 32] += pixels[i].r / 1024;
        return sums;
    };
    const std::string ball = R"(}, "ball": {"type": "GeomSphere", "segments": 240, "material": )";
    const auto smooth = blocksOf("0" + ball + R"("white"})");
    const auto raised = blocksOf(R"(0}, "ball": {"type": "GeomMesh", "file": "raised.ply",
        "smooth": false, "material": "white"})");
    float most = 0;
    for (const char* form : {"0", "5"}) {
        const auto bumped = blocksOf(form + ball + R"("bump"})");
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_NEAR(bumped[i] / raised[i], 1, 0.01f) << i;
            most = std::fmax(most, std::fabs(smooth[i] / raised[i] - 1));
        }
    }
    EXPECT_GT(most, 0.05f) << "the bump is not seen";
}

TEST_F(RenderTest, ManyLightsOfWhichSomeAreChosenGiveTheSameLight) {
    std::string plugins = R"("white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
        "wall": {"type": "GeomQuad", "material": "white", "width": 40, "height": 40})";
    for (int i = 0; i < 200; ++i)
        plugins += ", \"sun" + std::to_string(i) + R"(": {"type": "LightSun", "angle": 0,
            "direction": [0, 0, -1], "intensity": 0.05})";
    expectNear(meanOf(plugins, R"("gi": false)", 4), Color(10), 1e-3f);
}

TEST_F(RenderTest, WhatCannotBeRenderedIsRefusedByName) {
    const struct {
        const char *plugin, *error, *settings = "";
    } cases[] = {
        {R"("CameraPerspective", "fov": 180)", "/plugins/x: fov must lie between",
         R"("camera": "x")"},
        {R"("CameraPerspective", "target": [0, 0, 5])", "/plugins/x: position and",
         R"("camera": "x")"},
        {R"("LightArea", "direction": [0, 0, 0])", "/plugins/x: direction and up must not be 0"},
        {R"("LightSpot", "angle": 0)", "/plugins/x: angle must be above 0 and at most 360"},
        {R"("LightSpot", "falloff": 21)", "/plugins/x: falloff must lie between 0 and half"},
        {R"("GeomBox", "scale": [1, 0, 1])", R"(/plugins/x: "scale" must have three numbers)"},
        {R"("RenderChannel", "kind": "dept")", "/plugins/x/kind: there is no channel \"dept\""},
        {R"("RenderChannel", "channel_name": "a.b")", "/plugins/x/channel_name: expected 1 to 63"},
        {R"("RenderChannel", "channel_name": "depth")", "/plugins/x/channel_name: the name"},
    };
    for (const auto& c : cases) {
        const auto scene = read(R"("x": {"type": )" + std::string(c.plugin) + "}", c.settings);
        ASSERT_TRUE(scene);
        Picture picture;
        const RenderResult result = renderScene(*scene, {}, nullptr, nullptr, false, picture);
        EXPECT_THAT(result.error, testing::StartsWith(c.error));
    }
}

}  // namespace
}  // namespace Tarnkit
