// A bumped surface against the same heights as geometry.

#include <algorithm>
#include <cmath>
#include <sstream>

#include "host/plugins/plugin_holder.h"
#include "host/render/render_fixture.h"
#include "pelk/host/plugins/tex_noise.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {
namespace {

/// Low and small beside the ball: what a raised surface hides and shows of itself by parallax,
/// which no bump can, grows with the height.
constexpr float kHeight = 0.02f, kFeature = 0.25f;
constexpr int kSize = 128, kBlock = 32;

/// A finely split cap of the unit sphere, about +Z and larger than what the picture shows, each
/// vertex moved along the sphere's normal by the texture's height.
std::string raisedCap() {
    PluginHolder<TexNoise> noise;
    noise.set("color1", Color(-kHeight));
    noise.set("color2", Color(kHeight));
    noise.set("octaves", 1);
    noise.set("size", kFeature);
    noise.startFrame();
    RenderContext context;
    std::ostringstream file;
    file.precision(9);
    constexpr int kSteps = 200;
    for (int j = 0; j <= kSteps; ++j) {
        for (int i = 0; i <= kSteps; ++i) {
            const double x = (2.0 * i / kSteps - 1) * 0.7, y = (2.0 * j / kSteps - 1) * 0.7;
            const double z = std::sqrt(1 - x * x - y * y);
            context.hitPoint = {x, y, z};
            const double r = 1 + double{noise.plugin.getTexFloat(context)};
            file << "v " << x * r << " " << y * r << " " << z * r << "\n";
        }
    }
    for (int j = 0; j < kSteps; ++j) {
        for (int i = 0; i < kSteps; ++i) {
            const int at = j * (kSteps + 1) + i + 1, above = at + kSteps + 1;
            file << "f " << at << " " << at + 1 << " " << above + 1 << "\n"
                 << "f " << at << " " << above + 1 << " " << above << "\n";
        }
    }
    return file.str();
}

class BumpPicture : public RenderFixture {
protected:
    /// The means of the picture's blocks.
    std::vector<float> blocksOf(const std::string& object) {
        const std::string scene = R"("near": {"type": "CameraPerspective", "position": [0, 0, 6],
            "fov": 11},
            "sun": {"type": "LightSun", "direction": [-1, -0.4, -1.6], "angle": 0},
            "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
            "heights": {"type": "TexNoise", "octaves": 1, "size": 0.25,
                        "color1": [-0.02, -0.02, -0.02],
                        "color2": [0.02, 0.02, 0.02]},
            "bump": {"type": "MtlBump", "base_mtl": "white", "bump_tex_color": "heights",
                     "map_type": )";
        const auto read = this->read(scene + object, R"("camera": "near", "gi": false)");
        if (!read)
            return {};
        Picture picture;
        render(*read, picture, optionsOf(4, kSize, kSize));
        const std::vector<Color> pixels = pixelsOf<Color>(picture, 0);
        constexpr int kBlocks = kSize / kBlock;
        std::vector<float> means(kBlocks * kBlocks);
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x)
                means[y / kBlock * kBlocks + x / kBlock] +=
                    pixels[y * kSize + x].g / (kBlock * kBlock);
        }
        return means;
    }

    static float largestDifference(const std::vector<float>& a, const std::vector<float>& b) {
        float largest = 0.0f;
        for (size_t i = 0; i < b.size(); ++i)
            largest = std::max(largest, std::fabs(a.at(i) / b[i] - 1.0f));
        return largest;
    }
};

TEST_F(BumpPicture, LooksAsTheSameHeightsDoAsGeometry) {
    directory.write("cap.obj", raisedCap());
    const std::string ball = R"("ball": {"type": "GeomSphere", "segments": 512, "material": )";
    const auto raised = blocksOf(R"(0}, "cap": {"type": "GeomMesh", "file": "cap.obj",
        "material": "white"})");
    ASSERT_EQ(raised.size(), 16u);
    const auto plain = blocksOf("0}, " + ball + R"("white"})");
    EXPECT_GT(largestDifference(plain, raised), 0.03f) << "the heights show";
    for (const char* form : {"0", "5"}) {
        SCOPED_TRACE(form);
        const auto bumped = blocksOf(std::string(form) + "}, " + ball + R"("bump"})");
        EXPECT_LT(largestDifference(bumped, raised), 0.02f);
    }
}

}  // namespace
}  // namespace Tarnkit
