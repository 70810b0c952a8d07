#include <OpenImageIO/imageio.h>

#include <cmath>
#include <vector>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/tex_image.h"
#include "pelk/host/trace/render_context.h"
#include "recording_log.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

template <class T>
void writeImage(const std::string& path, int width, int height, int channels,
                const std::vector<T>& values) {
    OIIO::ImageSpec spec(width, height, channels, OIIO::BaseTypeFromC<T>::value);
    spec.attribute("oiio:UnassociatedAlpha", 1);  // as they are, without a change by the writer
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output && output->open(path, spec) &&
                output->write_image(spec.format, values.data()) && output->close());
}

class TexImageTest : public testing::Test {
protected:
    void open(const std::string& file, const char* space = "auto", bool repeat = true) {
        texture.renderer.sequenceData.log = &log;
        texture.set("file", file.c_str());
        texture.set("color_space", space);
        texture.set("repeat", repeat ? 1 : 0);
        texture.startFrame();
    }
    /// The hit at which the texture, as the backplate of a picture of one pixel, is at these
    /// coordinates.
    PelkContext& hit(double u, double v) {
        texture.renderer.frameData.imageWidth = texture.renderer.frameData.imageHeight = 1;
        context.renderer = &texture.renderer;
        context.shadeFlags = kShadeBackgroundLookup;
        context.screenX = u;
        context.screenY = 1 - v;
        return context;
    }
    AColor at(double u, double v) { return texture.plugin.getTexColor(hit(u, v)); }
    float red(double u, double v) { return at(u, v).color.r; }

    TemporaryDirectory dir;
    RecordingLog log;
    PluginHolder<TexImage> texture;
    RenderContext context;
};

float linear(int byte) {
    const double x = byte / 255.0;
    return static_cast<float>(x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4));
}

TEST_F(TexImageTest, PixelsStandUprightAndBlendInLinearLight) {
    const std::string file = dir.file("a.png");
    // Upper row 0 and 200, lower row 100 and 255.
    writeImage<unsigned char>(file, 2, 2, 1, {0, 200, 100, 255});
    const float a = linear(100), b = linear(255), c = linear(0), d = linear(200);
    open(file);
    EXPECT_NEAR(red(0.25, 0.25), a, 1e-5f) << "lower left";
    EXPECT_NEAR(red(0.75, 0.75), d, 1e-5f) << "upper right";
    EXPECT_NEAR(red(0.0, 0.0), (a + b + c + d) / 4, 1e-5f) << "the corner wraps";
    EXPECT_NEAR(red(3.25, 5.25), a, 1e-5f) << "repeats";
    open(file, "auto", false);
    EXPECT_NEAR(red(0.0, 0.25), a, 1e-5f) << "the edge stays";
    EXPECT_NEAR(red(3.25, 5.25), d, 1e-5f) << "beyond the edge";
    open(file, "linear");
    EXPECT_NEAR(red(0.25, 0.25), 100 / 255.0f, 1e-6f);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(TexImageTest, AlphaIsKeptApartUntilTheColourIsDecoded) {
    writeImage<unsigned char>(dir.file("a.png"), 1, 1, 4, {200, 100, 50, 51});
    open(dir.file("a.png"));
    EXPECT_NEAR(red(0.5, 0.5), linear(200) * 0.2f, 1e-5f);
    EXPECT_NEAR(at(0.5, 0.5).alpha, 0.2f, 1e-6f);
    // The texture has said 1 - alpha of what lies below already: EXR colours come multiplied.
    writeImage<float>(dir.file("a.exr"), 1, 1, 4, {0.25f, 3.0f, -1.0f, 0.5f});
    open(dir.file("a.exr"));
    EXPECT_EQ(at(0.5, 0.5), (AColor{{0.25f, 3.0f, -1.0f}, 0.5f}));
}

TEST_F(TexImageTest, IdsAreTheFilesOwnNumbers) {
    writeImage<unsigned short>(dir.file("ids.tif"), 2, 1, 1, {3, 40001});
    open(dir.file("ids.tif"));
    EXPECT_EQ(texture.plugin.getTexInt(hit(0.49, 0.0)), 3) << "no blend";
    EXPECT_EQ(texture.plugin.getTexInt(hit(0.51, 1.0)), 40001);
}

TEST_F(TexImageTest, FilesThatCannotBeReadAreBlackWithOneError) {
    std::vector<unsigned char> noise(64 * 64 * 3);
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<unsigned char>(i * i * 2654435761u >> 20);
    std::vector<std::string> files = {dir.file("none.png"), dir.path.string(), ""};
    for (const std::string ending : {"jpg", "tif", "exr", "hdr"}) {
        writeImage(dir.file("whole." + ending), 64, 64, 3, noise);
        const std::string bytes = dir.read("whole." + ending);
        files.push_back(dir.file("cut." + ending));
        dir.write("cut." + ending, bytes.substr(0, bytes.size() * 3 / 5));
    }
    for (const std::string& file : files) {
        log.texts.clear();
        open(file);
        EXPECT_THAT(log.texts, testing::ElementsAre(testing::HasSubstr(file)));
        EXPECT_EQ(at(0, 0), (AColor{Color(0), 1}));
    }
}

}  // namespace
}  // namespace Tarnkit
