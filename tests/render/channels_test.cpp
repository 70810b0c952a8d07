// Render channels of pictures, from the scene to the finished pixels.

#include <gmock/gmock.h>

#include "render/mesh.h"
#include "render_fixture.h"

namespace Tarnkit {
namespace {

using testing::HasSubstr;

/// A white quad at depth 5 that covers the left half of the picture, one at depth 6 that covers
/// all, behind it, and a bright sky.
constexpr const char* kQuads = R"(
    "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
    "near": {"type": "GeomQuad", "material": "white", "width": 50, "height": 50,
             "translate": [-25, 0, 0]},
    "far": {"type": "GeomQuad", "material": "white", "width": 50, "height": 50,
            "translate": [0, 0, -1]})";

class ChannelsTest : public RenderFixture {
protected:
    RenderOptions optionsWith(std::vector<std::string> channels, int width = 16, int height = 16) {
        RenderOptions options;
        options.width = width;
        options.height = height;
        options.samples = 4;
        options.threads = 2;
        options.channels = std::move(channels);
        return options;
    }
};

TEST_F(ChannelsTest, BeautyHasTheSameBitsWhateverIsAskedFor) {
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
    Picture plain;
    render(*scene, plain, optionsWith({}, 45, 33));
    Picture first;
    render(*scene, first, optionsWith({"all"}, 45, 33));
    for (const auto& [threads, tileSize] : {std::pair{1, 1}, {5, 7}, {2, 4096}}) {
        RenderOptions options = optionsWith({"all"}, 45, 33);
        options.threads = threads;
        options.tileSize = tileSize;
        Picture full;
        render(*scene, full, options);
        SCOPED_TRACE(tileSize);
        for (const int channel : {0, 1})
            EXPECT_EQ(pixelsOf<Color>(plain, channel), pixelsOf<Color>(full, channel));
        for (int i = 2; i < full.getRegion().getNumChannels(); ++i) {
            ChannelInfo info;
            full.getRegion().getChannelInfo(i, info);
            if (info.type == kChannelColor) {
                EXPECT_EQ(pixelsOf<Color>(first, i), pixelsOf<Color>(full, i)) << info.name;
            }
        }
    }
}

TEST_F(ChannelsTest, MeasuresAreThoseOfTheFrontAndIdsAreNeverAveraged) {
    const auto scene = read(kQuads, R"("background": [1, 1, 1])");
    ASSERT_TRUE(scene);
    Picture picture;
    // An odd width: the edge of the near quad goes through the middle column.
    render(*scene, picture,
           optionsWith({"depth", "render_id", "normals", "uv", "front", "transparency"}, 17, 8));
    const auto depth = pixelsOf<float>(picture, 2);
    const auto ids = pixelsOf<int>(picture, 3);
    const auto normals = pixelsOf<Vector>(picture, 4);
    const auto uv = pixelsOf<UV>(picture, 5);
    for (int x = 0; x < 17; ++x) {
        SCOPED_TRACE(x);
        const size_t at = size_t(17 * 3 + x);
        if (x != 8)
            EXPECT_NEAR(depth[at], x < 8 ? 5 : 6, 1e-4f);
        else
            EXPECT_TRUE(depth[at] == 5 || depth[at] == 6) << depth[at];
        EXPECT_EQ(ids[at], depth[at] < 5.5f ? 0 : 1);
        EXPECT_EQ(normals[at], Vector(0, 0, 1));
        EXPECT_NEAR(uv[at].v, 0.5f, 0.1f);
    }
}

TEST_F(ChannelsTest, WhereNothingIsHitIsFarAndHasNoId) {
    const auto scene = read(R"("lamp": {"type": "LightSphere", "radius": 1, "intensity": 3})",
                            R"("background": [0.25, 0.5, 1])");
    ASSERT_TRUE(scene);
    Picture picture;
    render(*scene, picture,
           optionsWith({"depth", "render_id", "background", "self_illumination"}, 33, 33));
    const size_t corner = 0, middle = 33 * 16 + 16;
    EXPECT_EQ(pixelsOf<float>(picture, 2)[corner], 1e18f);
    EXPECT_NEAR(pixelsOf<float>(picture, 2)[middle], 4, 0.01f);
    EXPECT_EQ(pixelsOf<int>(picture, 3)[corner], -1);
    EXPECT_EQ(pixelsOf<Color>(picture, 4)[corner], Color(0.25f, 0.5f, 1));
    EXPECT_EQ(pixelsOf<Color>(picture, 4)[middle], Color(0));
    EXPECT_EQ(pixelsOf<Color>(picture, 5)[middle], pixelsOf<Color>(picture, 0)[middle]);
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

TEST_F(ChannelsTest, NamesAreCheckedBeforeAnythingIsRendered) {
    const auto scene = read(kQuads, "");
    ASSERT_TRUE(scene);
    EXPECT_THAT(errorOf(*scene, optionsWith({"dept"})),
                testing::AllOf(HasSubstr("--channels: there is no channel \"dept\""),
                               HasSubstr("did you mean \"depth\"?")));
    Picture picture;
    render(*scene, picture, optionsWith({"depth", "beauty", "depth", "all", "depth"}));
    EXPECT_EQ(picture.getRegion().findChannelByName("depth"), 2);

    std::string hundred;
    for (int i = 0; i < 100; ++i)
        hundred += R"("c)" + std::to_string(i) +
                   R"(": {"type": "RenderChannel", "channel_name": "n)" + std::to_string(i) +
                   "\"},";
    const auto many = read(hundred + kQuads, R"("channels": ["n7"])");
    ASSERT_TRUE(many);
    render(*many, picture, optionsWith({}));
    EXPECT_EQ(picture.getRegion().getNumChannels(), 102);

    const struct {
        const char *plugin, *error;
    } bad[] = {
        {R"("kind": "dept")", "/plugins/c/kind: there is no channel \"dept\""},
        {R"("channel_name": "a.b")", "/plugins/c/channel_name: expected 1 to 63 letters"},
        {R"("channel_name": "depth")", "/plugins/c/channel_name: the name \"depth\" has a meaning"},
        {R"("channel_name": "n", "channel_type": "int")",
         "/plugins/c/channel_type: expected color or float, not \"int\""},
    };
    for (const auto& c : bad) {
        const auto wrong =
            read(std::string(R"("c": {"type": "RenderChannel", )") + c.plugin + "}", "");
        ASSERT_TRUE(wrong);
        EXPECT_THAT(errorOf(*wrong, optionsWith({})), testing::StartsWith(c.error));
    }
}

}  // namespace
}  // namespace Tarnkit
