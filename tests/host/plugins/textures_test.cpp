#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <vector>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/geom_quad.h"
#include "pelk/host/plugins/host_texture.h"
#include "pelk/host/plugins/tex_checker.h"
#include "pelk/host/plugins/tex_constant.h"
#include "pelk/host/plugins/tex_facing.h"
#include "pelk/host/plugins/tex_gradient.h"
#include "pelk/host/plugins/tex_image.h"
#include "pelk/host/plugins/tex_noise.h"
#include "pelk/host/plugins/uvwgen_map.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/scene_object.h"
#include "recording_log.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

/// A plug-in with its parameters, read at hits on a triangle whose u is x and whose v is y.
template <class T>
struct Holder : PluginHolder<T> {
    Holder() {
        object.mesh.positions = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}};
        object.mesh.uvs = {{0, 0}, {100, 0}, {0, 100}};
        object.mesh.triangles = {{0, 1, 2}};
        object.faceNormals = {{0, 0, 1}};
        context.object = &object;
        context.hitObject = &surface.plugin;
        context.triangle = 0;
        context.normal = {0, 0, 1};
        this->renderer.sequenceData.log = &log;
    }
    PelkContext& at(double u, double v) {
        context.hitPoint = {u, v, 0};
        return context;
    }

    RecordingLog log;
    PluginHolder<GeomQuad> surface;  // for its interfaces: the triangle is `object`'s
    SceneObject object;
    RenderContext context;
};

TEST(HostTexture, IntegersAreLimited) {
    const float values[] = {2.5f, -2.5f, NAN, 1e20f, -INFINITY};
    const int expected[] = {3, -3, 0, 2147483520, -2147483647 - 1};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(nearestInt(values[i]), expected[i]) << values[i];
}

TEST(TexChecker, TakesTurnsAlongBothAxes) {
    Holder<TexChecker> texture;
    texture.set("squares", 2.0f);
    texture.set("color2", Color(9, 8, 7));
    texture.startFrame();
    const struct {
        double u, v;
        int square;
    } cases[] = {{0.2, 0.2, 0}, {0.7, 0.2, 1}, {0.2, 0.7, 1}, {9.7, -6.8, 1}, {-9.8, 0.2, 0}};
    for (const auto& c : cases) {
        PelkContext& hit = texture.at(c.u, c.v);
        EXPECT_EQ(texture.plugin.getTexInt(hit), c.square) << c.u << " " << c.v;
        EXPECT_EQ(texture.plugin.getTexColor(hit).color == Color(9, 8, 7), c.square == 1);
    }
    texture.context.object = nullptr;
    EXPECT_EQ(texture.plugin.getTexInt(texture.context), 0) << "no surface";
}

// A pixel of these hits is a thousandth of the ray's length, as they have no ray differentials.

TEST(HostTexture, OwnBumpIsMinusTheSlopeOfTheHeight) {
    Holder<TexGradient> gradient;
    gradient.set("color1", Color(0.1f, 0.2f, 0.6f));  // mean 0.3
    gradient.set("color2", Color(0.9f, 0.6f, 0.6f));  // mean 0.7
    gradient.startFrame();
    EXPECT_NEAR(length(gradient.plugin.getTexBump(gradient.at(0.4, 7)) - Vector(-0.4f, 0, 0)), 0.0f,
                1e-3f);
    EXPECT_EQ(gradient.plugin.getTexBump(gradient.at(3, 7)), Vector()) << "flat beyond its end";
    gradient.set("form", 2);
    gradient.startFrame();
    // From the middle outwards: 0.4 over half a unit.
    EXPECT_NEAR(length(gradient.plugin.getTexBump(gradient.at(0.5, 0.25)) - Vector(0, 0.8f, 0)),
                0.0f, 1e-3f);
    const Point before = gradient.context.hitPoint;
    gradient.plugin.getTexBump(gradient.context);
    EXPECT_EQ(gradient.context.hitPoint, before);

    Holder<TexChecker> checker;
    checker.set("squares", 1.0f);
    checker.startFrame();
    EXPECT_EQ(checker.plugin.getTexBump(checker.at(3.5, 4.5)), Vector()) << "squares are flat";
    const Vector edge = checker.plugin.getTexBump(checker.at(4, 4.5));
    EXPECT_NEAR(-edge.x / (0.6f / (1e-3f * std::hypot(4.0f, 4.5f))), 1.0f, 1e-3f)
        << "a step of a pixel's width";
    EXPECT_EQ(edge.y, 0.0f);

    Holder<TexConstant> constant;
    Holder<TexFacing> facing;
    constant.startFrame();
    facing.startFrame();
    EXPECT_EQ(constant.plugin.getTexBump(constant.at(1, 2)), Vector());
    EXPECT_EQ(facing.plugin.getTexBump(facing.at(1, 2)), Vector());
}

/// The derivative of a texture's height along `way` by a stencil of five points, whose error falls
/// with the fourth power of the step.
template <class T>
double slope(Holder<T>& texture, const Point& at, Vector way, double step) {
    const auto height = [&](double steps) {
        texture.context.hitPoint = {at.x + way.x * steps * step, at.y + way.y * steps * step,
                                    at.z + way.z * steps * step};
        return double{texture.plugin.getTexFloat(texture.context)};
    };
    return (8 * (height(1) - height(-1)) - (height(2) - height(-2))) / (12 * step);
}

TEST(HostTexture, OwnBumpOfNoiseGoesByThePlaceInTheScene) {
    Holder<TexNoise> noise;
    noise.set("size", 2.0f);
    noise.set("octaves", 2);
    noise.startFrame();
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-2, 2);
    float steepest = 0.0f;
    for (int i = 0; i < 200; ++i) {
        const Point at{place(random), place(random), place(random)};
        const Vector n = normalizeGuarded(at - Point());
        const Vector x = normalizeGuarded(cross(n, {0.3f, -0.5f, 0.8f})), y = cross(n, x);
        noise.context.normal = n;
        noise.context.hitPoint = at;
        const Vector bump = noise.plugin.getTexBump(noise.context);
        EXPECT_NEAR(dot(bump, n), 0.0f, 1e-5f) << "along the surface";
        EXPECT_NEAR(dot(bump, x), -slope(noise, at, x, 0.02), 4e-3f);
        EXPECT_NEAR(dot(bump, y), -slope(noise, at, y, 0.02), 4e-3f);
        steepest = std::max(steepest, length(bump));
    }
    EXPECT_GT(steepest, 0.2f);
}

TEST(UVWGenMap, ScalesTurnsAndMoves) {
    Holder<UVWGenMap> map;
    map.set("scale", Color(2, 3, 1));
    map.set("rotation", 90.0f);
    map.set("offset", Color(10, 20, 30));
    map.startFrame();
    const Vector uvw = map.plugin.getUVW(map.at(1, 2));
    EXPECT_NEAR(length(uvw - Vector(10 - 6, 20 + 2, 30)), 0.0f, 1e-5f);
}

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
        texture.set("file", file.c_str());
        texture.set("color_space", space);
        texture.set("repeat", repeat ? 1 : 0);
        texture.startFrame();
    }
    AColor at(double u, double v) { return texture.plugin.getTexColor(texture.at(u, v)); }
    float red(double u, double v) { return at(u, v).color.r; }

    TemporaryDirectory dir;
    Holder<TexImage> texture;
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
    EXPECT_TRUE(texture.log.texts.empty());
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
    EXPECT_EQ(texture.plugin.getTexInt(texture.at(0.49, 0.0)), 3) << "no blend";
    EXPECT_EQ(texture.plugin.getTexInt(texture.at(0.51, 1.0)), 40001);
}

TEST_F(TexImageTest, FilesThatCannotBeReadAreBlackWithOneError) {
    std::mt19937 random(1);
    std::vector<unsigned char> noise(64 * 64 * 3);
    for (unsigned char& value : noise)
        value = static_cast<unsigned char>(random());
    std::vector<std::string> files = {dir.file("none.png"), dir.path.string(), ""};
    for (const std::string ending : {"jpg", "tif", "exr", "hdr"}) {
        writeImage(dir.file("whole." + ending), 64, 64, 3, noise);
        const std::string bytes = dir.read("whole." + ending);
        files.push_back(dir.file("cut." + ending));
        dir.write("cut." + ending, bytes.substr(0, bytes.size() * 3 / 5));
    }
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        texture.log.texts.clear();
        open(file);
        EXPECT_THAT(texture.log.texts, testing::ElementsAre(testing::HasSubstr(file)));
        EXPECT_EQ(at(0, 0), (AColor{Color(0), 1}));
    }
}

TEST_F(TexImageTest, AFileThatChangedIsReadAnew) {
    for (const unsigned char value : {255, 0}) {
        writeImage<unsigned char>(dir.file("a.png"), 1, 1, 1, {value});
        Holder<TexImage> reader;
        reader.set("file", dir.file("a.png").c_str());
        reader.startFrame();
        EXPECT_EQ(reader.plugin.getTexColor(reader.at(0, 0)).color, Color(value / 255.0f));
    }
}

}  // namespace
}  // namespace Tarnkit
