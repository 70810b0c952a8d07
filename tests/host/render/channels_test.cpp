// Render channels of pictures, from the scene to the finished pixels.

#include "host/render/render_fixture.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {
namespace {

class ChannelsTest : public RenderFixture {
protected:
    static RenderOptions optionsWith(std::vector<std::string> channels, int width = 16,
                                     int height = 16) {
        RenderOptions options = optionsOf(4, width, height);
        options.channels = std::move(channels);
        return options;
    }
};

TEST_F(ChannelsTest, BitsAreTheSameWhateverIsAskedForInAnyOrderAndOnAnyThreads) {
    const auto scene = read(R"(
        "mirror": {"type": "MtlDiffuse", "diffuse": [0.2, 0.3, 0.4], "reflection": [0.5, 0.5, 0.5]},
        "veil": {"type": "MtlDiffuse", "transparency": [0.5, 0.3, 1]},
        "ball": {"type": "GeomSphere", "material": "mirror"},
        "curtain": {"type": "GeomQuad", "material": "veil", "translate": [0, 0, 2]},
        "matte": {"type": "MtlWrapper", "base_material": "mirror", "matte_surface": true,
                  "shadows": true, "shadow_tint_color": [0.3, 0.1, 0]},
        "faint": {"type": "MtlRenderStats", "base_mtl": "matte", "visibility": 0.37},
        "floor": {"type": "GeomQuad", "material": "faint", "width": 9, "height": 9,
                  "rotate": [-90, 0, 0], "translate": [0, -1, 0]},
        "lamp": {"type": "LightSphere", "radius": 0.3, "position": [1, 1, 0]},
        "dome": {"type": "LightDome", "intensity": 0.3})",
                            "");
    ASSERT_TRUE(scene);
    Picture plain, full;
    render(*scene, plain, optionsWith({}, 45, 33));
    render(*scene, full, optionsWith({"all"}, 45, 33));
    for (const int channel : {0, 1})
        EXPECT_EQ(pixelsOf<Color>(plain, channel), pixelsOf<Color>(full, channel));
    const struct {
        int threads, tileSize;
        SampleOrder order;
    } cuts[] = {{1, 1, SampleOrder::Tiles}, {5, 7, SampleOrder::Passes}, {2, 4096, {}}};
    for (const auto& [threads, tileSize, order] : cuts) {
        RenderOptions options = optionsWith({"all"}, 45, 33);
        options.threads = threads;
        options.tileSize = tileSize;
        options.order = order;
        Picture again;
        render(*scene, again, options);
        for (int i = 0; i < full.getRegion().getNumChannels(); ++i) {
            ChannelInfo info;
            full.getRegion().getChannelInfo(i, info);
            if (info.type == kChannelColor) {
                EXPECT_EQ(pixelsOf<Color>(full, i), pixelsOf<Color>(again, i))
                    << info.name << " in tiles of " << tileSize;
            }
        }
    }
}

TEST_F(ChannelsTest, MeasuresAreThoseOfTheFrontAndNeverAveraged) {
    const auto scene = read(R"(
        "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
        "quad": {"type": "GeomQuad", "material": "white", "width": 50, "height": 50,
                 "translate": [-25, 0, 0]})",
                            R"("background": [0.25, 0.5, 1])");
    ASSERT_TRUE(scene);
    Picture picture;
    const Color sky(0.25f, 0.5f, 1);
    // An odd width: the edge of the quad goes through the middle column.
    render(*scene, picture, optionsWith({"depth", "render_id", "normals", "background"}, 17, 8));
    const auto depth = pixelsOf<float>(picture, 2);
    for (std::size_t x = 0; x < 17; ++x) {
        SCOPED_TRACE(x);
        const bool hit = x == 8 ? depth[x] < 1e18f : x < 8;
        EXPECT_NEAR(depth[x], hit ? 5 : 1e18f, 1e-4f);
        EXPECT_EQ(pixelsOf<int>(picture, 3)[x], hit ? 0 : -1);
        EXPECT_EQ(pixelsOf<Vector>(picture, 4)[x], hit ? Vector(0, 0, 1) : Vector());
        EXPECT_TRUE(x == 8 || pixelsOf<Color>(picture, 5)[x] == (hit ? Color(0) : sky));
    }
}

TEST_F(ChannelsTest, WhatMaterialsWriteAddsUpAlongTheRay) {
    const auto scene = read(R"(
        "light": {"type": "RenderChannel", "channel_name": "my_light"},
        "veil": {"type": "MtlDiffuse", "diffuse": [1, 0.5, 0.25], "transparency": [0.5, 0.25, 0],
                 "render_channel_color": "light"},
        "wall": {"type": "GeomQuad", "material": "veil", "width": 50, "height": 50},
        "again": {"type": "GeomQuad", "material": "veil", "width": 50, "height": 50,
                  "translate": [0, 0, -1]},
        "sun": {"type": "LightSun", "direction": [0, 0, -1], "shadows": false})",
                            R"("gi": false)");
    ASSERT_TRUE(scene);
    Picture picture;
    render(*scene, picture, optionsWith({}));
    ASSERT_EQ(picture.getRegion().getNumChannels(), 3);
    const Color beauty = meanOf(pixelsOf<Color>(picture, 0));
    EXPECT_GT(beauty.g, 0.1f);
    expectNear(meanOf(pixelsOf<Color>(picture, 2)), beauty, 1e-5f);
}

TEST_F(ChannelsTest, RaysOfLayersAndSidesCountByWhatIsSeenOfThem) {
    for (const char* surface : {R"("MtlLayeredBRDF", "brdfs": ["coat", "mirror"])",
                                R"("Mtl2Sided", "front": "mirror", "back": "mirror",
                                   "translucency": [0.25, 0.25, 0.25])"}) {
        SCOPED_TRACE(surface);
        const auto scene = read(R"(
            "coat": {"type": "BRDFGlossy", "roughness": 0, "ior": 3},
            "mirror": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [0.5, 0.4, 0.3]},
            "wall": {"type": "GeomQuad", "material": "surface", "width": 50, "height": 50},
            "surface": {"type": )" + std::string(surface) +
                                    "}",
                                R"("background": [1, 1, 1])");
        ASSERT_TRUE(scene);
        Picture picture;
        render(*scene, picture, optionsWith({"reflection"}));
        const Color beauty = meanOf(pixelsOf<Color>(picture, 0));
        EXPECT_GT(beauty.r, 0.3f);
        expectNear(meanOf(pixelsOf<Color>(picture, 2)), beauty, 1e-5f);
    }
}

}  // namespace
}  // namespace Tarnkit
