// Pictures, by what must hold of them.

#include <cmath>
#include <fstream>
#include <numbers>
#include <span>
#include <sstream>

#include "host/plugins/plugin_holder.h"
#include "host/render/render_fixture.h"
#include "pelk/host/plugins/tex_noise.h"
#include "pelk/host/render/plugin_check.h"
#include "pelk/support/plugin_manager.h"

namespace Tarnkit {
namespace {

using RenderTest = RenderFixture;

TEST_F(RenderTest, WhiteInWhiteSurroundingsIsWhite) {
    const std::string plugins = R"("clear": {"type": "MtlRenderStats", "visibility": 0},
        "scaled": {"type": "MtlWrapper", "base_material": "white", "receive_gi": 0.999},
        "coat": {"type": "BRDFGlossy", "roughness": 0, "ior": 1.5}, "ball": {"type": "GeomSphere")";
    const std::string shown = R"(, "radius": 3, "material": "x"}, "x": {"type": )";
    const std::string sampled = R"(, "radius": 1.5, "material": "lit"},
        "lit": {"type": "MtlSingleBRDF", "brdf": "x"}, "x": {"type": )";
    const struct {
        const std::string &ball, x;
        int samples = 64;
        float tolerance = 0.02f;
    } cases[] = {
        {shown, R"("MtlDiffuse", "diffuse": [1, 1, 1])", 256, 0.005f},
        {shown, R"("MtlSingleBRDF", "brdf": "white")", 256, 0.005f},
        {shown, R"("MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1])", 256, 0.005f},
        {shown, R"("MtlLayeredBRDF", "brdfs": ["clear", "coat", "white"])", 256, 0.005f},
        {shown, R"("Mtl2Sided", "front": "white", "back": "scaled")", 256, 0.005f},
        {sampled, R"("BRDFGlossy", "roughness": 0)"},
        {sampled, R"("BRDFGlossy", "roughness": 0.2)"},
        {sampled, R"("BRDFGlossy", "roughness": 0.5, "tail": 4)"},
        {sampled, R"("BSDFGlass")"},
        {sampled, R"("BSDFGlass", "roughness": 0.1, "ior": 2)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.x);
        const std::string scene = plugins + c.ball + c.x + "}", depth = R"("max_depth": 50)";
        // Surroundings that are sampled and met, and those that indirect rays alone meet.
        for (const Color& mean :
             {meanOf(scene + R"(, "dome": {"type": "LightDome"})", depth, c.samples),
              meanOf(scene, depth + R"(, "background": [1, 1, 1])", c.samples)})
            expectNear(mean, Color(1), c.tolerance);
    }
}

TEST_F(RenderTest, AThinSurfaceShowsTheLightOfBothSides) {
    const std::string leaf = R"(, "red": {"type": "MtlDiffuse", "diffuse": [1, 0, 0]},
        "leaf": {"type": "Mtl2Sided", "front": "red", "back": "white",
                 "translucency": [0.25, 0.25, 0.25], "mult_by_front_diffuse": )";
    const char* dome = R"(, "light": {"type": "LightDome"})";
    const char* behind = R"(, "light": {"type": "LightSun", "direction": [0, 0, 1], "angle": 5})";
    const char* turned = R"(, "rotate": [0, 180, 0])";
    const struct {
        const char *turn, *multiply, *light, *settings;
        Color expected;
    } cases[] = {
        {"", "false}", dome, R"("max_depth": 5)", {1, 0.25f, 0.25f}},
        {turned, "false}", dome, R"("max_depth": 5)", {1, 0.75f, 0.75f}},
        {turned, "false}", behind, R"("max_depth": 5)", {0.25f, 0, 0}},
        {"", "true}", behind, R"("gi": false)", {0.25f, 0, 0}},
    };
    for (const auto& c : cases) {
        const std::string plugins = wallOf("leaf", c.turn) + leaf + c.multiply + c.light;
        SCOPED_TRACE(plugins + c.settings);
        expectNear(meanOf(plugins, c.settings), c.expected, 0.005f);
    }
}

TEST_F(RenderTest, DirectLightIsFilteredByWhatStandsInTheWayAndComesFromEveryLight) {
    const std::string scene = R"(,
        "open": {"type": "MtlRenderStats", "base_mtl": "white", "shadows_receive": false},
        "film": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "transparency": [1, 0.5, 0]},
        "first": {"type": "GeomQuad", "material": "film", "width": 90, "height": 90,
                  "translate": [0, 0, 20]},
        "second": {"type": "GeomQuad", "material": "film", "width": 90, "height": 90,
                   "translate": [0, 0, 21], "rotate": [0, 180, 0]},
        "sun": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0, "shadows": )";
    const char* alone = R"("gi": false)";
    expectNear(meanOf(wallOf("white") + scene + "true}", alone, 4), Color(1, 0.25f, 0), 1e-5f);
    expectNear(meanOf(wallOf("open") + scene + "true}", alone, 4), Color(1), 1e-5f);
    expectNear(meanOf(wallOf("white") + scene + "false}", alone, 4), Color(1), 1e-5f);

    std::string suns = wallOf("white");
    for (int i = 0; i < 200; ++i)
        suns += ", \"sun" + std::to_string(i) + R"(": {"type": "LightSun", "angle": 0,
            "direction": [0, 0, -1], "intensity": 0.05})";
    expectNear(meanOf(suns, alone, 4), Color(10), 1e-3f);
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
    PluginHolder<TexNoise> noise{{"octaves", 1}, {"size", 0.5f}};
    noise.startFrame();
    directory.write("raised.ply", raisedBall(noise, 0.06f));
    const auto blocksOf = [&](const std::string& ball) {
        render(R"("near": {"type": "CameraPerspective", "position": [0, 0, 5], "fov": 12},
            "sun": {"type": "LightSun", "direction": [-0.8, 0.4, -1], "angle": 0},
            "noise": {"type": "TexNoise", "octaves": 1, "size": 0.5},
            "bump": {"type": "MtlBump", "base_mtl": "white", "bump_tex_color": "noise",
                     "bump_tex_mult": 0.06, "map_type": )" +
                   ball,
               R"("gi": false, "camera": "near")", optionsOf(4, 128, 128));
        const auto pixels = pixelsOf(picture);
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

TEST_F(RenderTest, GlassThatPassesShadowsCountsLightOnce) {
    // All is inside a ball of glass that neither bends nor mirrors: as if it weren't there.
    const std::string common = R"(, "grey": {"type": "MtlDiffuse", "diffuse": [0.8, 0.8, 0.8]},
        "metal": {"type": "BRDFGlossy", "roughness": 0.5, "ior": 30},
        "sheen": {"type": "MtlSingleBRDF", "brdf": "metal"}, "light": {"type": )";
    const std::string ball = R"(}, "ball": {"type": "GeomSphere", "material": "shell", "radius": 9},
        "shell": {"type": "MtlSingleBRDF", "brdf": "clear"},
        "clear": {"type": "BSDFGlass", "ior": 1, "pass_shadows": )";
    const std::string area = R"("LightArea", "position": [0, 5, 20], "direction": [0, 0, -1],
        "width": 40, "height": 40)";
    const std::string lights[] = {
        R"("LightDome", "intensity": 0.7)",
        R"("LightSun", "direction": [1, 0, -1], "angle": 60)",
        area,
        area + R"(, "shadows": false)",
    };
    const struct {
        const char *pass, *material, *settings;
        std::size_t lightCount = 3;  // the one without shadows comes last
    } cases[] = {
        {"true}", "grey", R"("max_depth": 9)", 4},
        {"true}", "sheen", R"("max_depth": 9)"},
        {"true}", "grey", R"("max_depth": 9, "reflective_gi": false)"},
        {"true}", "grey", R"("gi": false)"},
        {"false}", "grey", R"("max_depth": 9)"},
    };
    for (const auto& c : cases) {
        for (const std::string& light : std::span(lights, c.lightCount)) {
            SCOPED_TRACE(light + c.pass + c.material + c.settings);
            const std::string open = wallOf(c.material) + common + light;
            const Color bare = meanOf(open + "}", c.settings, 64);
            EXPECT_GT(bare.g, 0.05f);
            expectNear(meanOf(open + ball + c.pass, c.settings, 64), bare, 0.02f * bare.g);
        }
    }
}

TEST_F(RenderTest, ACoatMirrorsByItsIndexAndGlassTurnsTheWorldUpsideDown) {
    const std::string coat = R"(, "coat": {"type": "BRDFGlossy", "roughness": 0.3, "ior": 1.5},
        "mtl": {"type": "MtlSingleBRDF", "brdf": "coat", "double_sided": )";
    const char *turned = R"(, "rotate": [0, 180, 0])", *sky = R"("background": [1, 1, 1])";
    expectNear(meanOf(wallOf("mtl") + coat + "0}", sky), Color(0.04f), 0.003f);
    expectNear(meanOf(wallOf("mtl", turned) + coat + "1}", sky), Color(0.04f), 0.003f);
    expectNear(meanOf(wallOf("mtl", turned) + coat + "0}", sky), Color(0), 0.0f);

    render(R"("glass": {"type": "BSDFGlass"}, "mtl": {"type": "MtlSingleBRDF", "brdf": "glass"},
        "ball": {"type": "GeomSphere", "material": "mtl", "radius": 1.5},
        "map": {"type": "UVWGenEnvironment"}, "dome": {"type": "LightDome", "texture": "sky"},
        "sky": {"type": "TexGradient", "form": 1, "color1": [0, 0, 1], "color2": [1, 0, 0],
                "uvwgen": "map"})",
           R"("max_depth": 40)", optionsOf(64));
    const auto pixels = pixelsOf(picture);
    const Color lowerHalf = meanOf({pixels.begin() + 128, pixels.end()});
    EXPECT_GT(lowerHalf.r, lowerHalf.b + 0.05f);
}

TEST_F(RenderTest, AWrapperThatAddsNothingShowsItsBaseOnBothRoads) {
    const auto pixelsWith = [&](const std::string& wrapper, const std::string& shown) {
        render(R"("base": {"type": "MtlDiffuse", "diffuse": [0.7, 0.5, 0.3],
                           "reflection": [0.2, 0.2, 0.2]},
            "sampled": {"type": "MtlSingleBRDF", "brdf": "wrapper"},
            "floor": {"type": "GeomQuad", "material": "base", "width": 9, "height": 9,
                      "rotate": [-90, 0, 0], "translate": [0, -1, 0]},
            "sun": {"type": "LightSun", "direction": [1, -1, -1], "angle": 5},
            "dome": {"type": "LightDome", "intensity": 0.3}, "wrapper": {"type": )" +
                   wrapper + R"(}, "ball": {"type": "GeomSphere", "material": )" + shown + "}",
               "", optionsOf(4));
        return pixelsOf(picture);
    };
    const char* const bare = R"("MtlRenderStats", "base_mtl": "base")";
    const std::vector<Color> expected[] = {
        pixelsWith(bare, R"("base")"),
        pixelsWith(R"("MtlSingleBRDF", "brdf": "base")", R"("wrapper")")};
    for (const char* wrapper :
         {bare, R"("MtlWrapper", "base_material": "base")", R"("MtlOverride", "base_mtl": "base")",
          R"("MtlMulti", "mtls_list": ["base"], "ids_list": [0], "wrap_id": true)",
          R"("MtlMaterialID", "base_mtl": "base")", R"("MtlDoubleSided", "base_mtl": "base")"}) {
        SCOPED_TRACE(wrapper);
        for (const bool sampled : {false, true}) {
            const auto pixels = pixelsWith(wrapper, sampled ? R"("sampled")" : R"("wrapper")");
            for (std::size_t i = 0; i < pixels.size(); ++i)
                expectNear(pixels[i], expected[sampled][i], 1e-5f);
        }
    }
}

TEST_F(RenderTest, BackgroundIsNoLightWhereThereIsADome) {
    for (const std::string dome : {R"("visible": false)", R"("shadows": false)"}) {
        const std::string plugins =
            wallOf("white") + R"(, "dome": {"type": "LightDome", )" + dome + "}";
        expectNear(meanOf(plugins, R"("background": [5, 5, 5])"), Color(1), 0.02f);
    }
    expectNear(meanOf(R"("dome": {"type": "LightDome", "visible": false})",
                      R"("background": [5, 5, 5])", 1),
               Color(5), 0.0f);
}

TEST_F(RenderTest, NothingIsFoundAgainstThePluginsOfThisProgram) {
    HostRenderer renderer;
    renderer.sequenceData.numThreads = 1;
    PluginManager& manager = session.getManager();
    for (const PluginKind* const kind : session.getKinds()) {
        Plugin* const plugin = manager.newPlugin(kind->getName(), session.getPluginHost(), 0);
        auto* const instance = findInterface<PelkPluginInterface>(plugin);
        instance->renderBegin(renderer);
        const PluginCheck check(*instance);
        instance->frameBegin(renderer);
        EXPECT_THAT(check.afterFrameBegin(), testing::IsEmpty()) << kind->getName();
        instance->frameEnd(renderer);
        instance->renderEnd(renderer);
        manager.deletePlugin(plugin);
    }
}

TEST_F(RenderTest, WhatCannotBeRenderedIsRefusedByName) {
    const struct {
        const char *plugin, *error, *settings = "";
    } cases[] = {
        {R"("CameraPerspective", "fov": 180)", "/plugins/x: fov must lie between",
         R"("camera": "x")"},
        {R"("CameraPerspective", "target": [0, 0, 5])", "/plugins/x: position and",
         R"("camera": "x")"},
        {R"("CameraPerspective", "position": [0, 0, 1e19])", "/plugins/x: its rays start beyond",
         R"("camera": "x")"},
        {R"("CameraOrthographic", "width": 1e30)", "/plugins/x: its rays start beyond",
         R"("camera": "x")"},
        {R"("GeomQuad", "width": 1)", "/plugins/camera: its rays start beyond 1e18",
         R"("origin": [1e19, 0, 0])"},
        {R"("LightSphere", "radius": 1e20)", "/plugins/x: radius must be above 0"},
        {R"("LightArea", "position": [1e20, 0, 0])", "/plugins/x: width and height must be"},
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
        const RenderResult result =
            renderScene(*scene, optionsOf(1), nullptr, nullptr, false, picture);
        EXPECT_THAT(result.error, testing::StartsWith(c.error));
    }
}

/// Sixty balls of two kinds around a mirror that hides every third of them, some of them clear and
/// mirrored, all with materials of their own. `step`: by how much each is larger than the last.
std::string crowdOf(double step) {
    std::ostringstream scene;
    std::string hidden;
    scene << std::fixed;
    for (int i = 0; i < 60; ++i) {
        const char* const image = i % 5 ? "" : R"(, "scale": [-1, 1.5, 1])";
        const int column = i % 10, row = i / 10;
        scene << "\"m" << i << R"(": {"type": "MtlDiffuse", "diffuse": [0.1, 0.6, )" << i / 60.0
              << R"(], "transparency": [)" << (i % 4 ? 0.0 : 0.6) << ", 0.3, 0]},\n\"b" << i
              << R"(": {"type": "GeomSphere", "segments": )" << (i % 2 ? 16 : 21)
              << R"(, "material": "m)" << i << R"(", "rotate": [20, )" << i << R"(, 5], "radius": )"
              << 0.12 + step * i << image << R"(, "translate": [)" << 0.25 * column - 1.1 << ", "
              << 0.4 * row - 1 << ", " << 0.1 * (i % 3) << "]},\n";
        hidden += i % 3 ? "" : (hidden.empty() ? "\"b" : ", \"b") + std::to_string(i) + "\"";
    }
    scene
        << R"("choosy": {"type": "MtlWrapper", "base_material": "silver", "reflection_exclude": [)"
        << hidden << R"(]},
        "mirror": {"type": "GeomQuad", "width": 9, "height": 9, "translate": [0, 0, -1],
                   "material": "choosy"},
        "sun": {"type": "LightSun", "direction": [-1, 2, 1.5], "angle": 4})";
    return scene.str();
}

TEST_F(RenderTest, EqualObjectsThatShareTheirTrianglesLookAsIfTheyHadTheirOwn) {
    std::vector<Color> pixels[2];
    for (const double step : {0.0, 3e-7}) {
        const auto scene = read(crowdOf(step), R"("max_depth": 4, "background": [0.3, 0.4, 0.5])");
        ASSERT_TRUE(scene);
        Picture crowd;
        render(*scene, crowd, optionsOf(16, 48, 48));
        pixels[step > 0.0] = pixelsOf<Color>(crowd, 0);
    }
    int other = 0;
    for (std::size_t i = 0; i < pixels[0].size(); ++i) {
        const Color d = pixels[0][i] - pixels[1][i];
        other += std::fabs(d.r) + std::fabs(d.g) + std::fabs(d.b) > 0.02f;
    }
    EXPECT_LT(other, 30) << "of " << pixels[0].size() << " pixels";
    expectNear(meanOf(pixels[0]), meanOf(pixels[1]), 5e-4f);
}

/// The most memory that the process has had, in MB; 0 where the system doesn't tell.
long peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long kilobytes;
        if (word == "VmHWM:" && status >> kilobytes)
            return kilobytes / 1024;
    }
    return 0;
}

TEST_F(RenderTest, EqualBallsTakeTheMemoryOfOne) {
    std::ostringstream balls;
    for (int i = 0; i < 600; ++i)
        balls << "\"b" << i << R"(": {"type": "GeomSphere", "translate": [)" << i << ", 0, 0]},";
    const long before = peakMemory();
    const auto scene = read(balls.str() + R"("sky": {"type": "LightDome"})", "");
    ASSERT_TRUE(scene);
    Picture row;
    render(*scene, row, optionsOf(1));
    EXPECT_LT(peakMemory() - before, 300) << "1,600 MB if each has triangles of its own";
}

}  // namespace
}  // namespace Tarnkit
