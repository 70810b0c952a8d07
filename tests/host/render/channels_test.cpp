// Render channels of pictures, from the scene to the finished pixels.

#include "host/render/render_fixture.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {
namespace {

using ChannelsTest = RenderFixture;

TEST_F(ChannelsTest, MeasuresAreThoseOfTheFrontAndNeverAveraged) {
    // An odd width: the edge of the quad goes through the middle column.
    render(R"("quad": {"type": "GeomQuad", "material": "white", "width": 50, "height": 50,
                       "translate": [-25, 0, 0]})",
           R"("background": [0.25, 0.5, 1])",
           optionsOf(4, 17, 8, {"depth", "render_id", "normals", "background"}));
    const auto depth = pixelsOf<float>(picture, 2);
    for (std::size_t x = 0; x < 17; ++x) {
        SCOPED_TRACE(x);
        const bool hit = x == 8 ? depth[x] < 1e18f : x < 8;
        EXPECT_NEAR(depth[x], hit ? 5 : 1e18f, 1e-4f);
        EXPECT_EQ(pixelsOf<int>(picture, 3)[x], hit ? 0 : -1);
        EXPECT_EQ(pixelsOf<Vector>(picture, 4)[x], hit ? Vector(0, 0, 1) : Vector());
        EXPECT_TRUE(x == 8 || pixelsOf(picture, 5)[x] == (hit ? Color(0) : Color(0.25f, 0.5f, 1)));
    }
}

TEST_F(ChannelsTest, WhatMaterialsWriteAddsUpAlongTheRayByWhatIsSeenOfIt) {
    const std::string mirrors = wallOf("surface") + R"(,
        "coat": {"type": "BRDFGlossy", "roughness": 0, "ior": 3},
        "mirror": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [0.5, 0.4, 0.3]},
        "surface": {"type": )";
    const struct {
        std::string plugins, settings;
        std::vector<std::string> channels;
    } cases[] = {
        {wallOf("veil") + R"(, "light": {"type": "RenderChannel", "channel_name": "my_light"},
            "veil": {"type": "MtlDiffuse", "diffuse": [1, 0.5, 0.25],
                     "transparency": [0.5, 0.25, 0], "render_channel_color": "light"},
            "again": {"type": "GeomQuad", "material": "veil", "width": 50, "height": 50,
                      "translate": [0, 0, -1]},
            "sun": {"type": "LightSun", "direction": [0, 0, -1], "shadows": false})",
         R"("gi": false)",
         {}},
        {mirrors + R"("MtlLayeredBRDF", "brdfs": ["coat", "mirror"]})",
         R"("background": [1, 1, 1])",
         {"reflection"}},
        {mirrors + R"("Mtl2Sided", "front": "mirror", "back": "mirror",
                      "translucency": [0.25, 0.25, 0.25]})",
         R"("background": [1, 1, 1])",
         {"reflection"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.plugins);
        render(c.plugins, c.settings, optionsOf(4, 16, 16, c.channels));
        ASSERT_EQ(picture.getRegion().getNumChannels(), 3);
        const Color beauty = meanOf(pixelsOf(picture));
        EXPECT_GT(beauty.r, 0.3f);
        EXPECT_GT(beauty.g, 0.1f);
        expectNear(meanOf(pixelsOf(picture, 2)), beauty, 1e-5f);
    }
}

}  // namespace
}  // namespace Tarnkit
