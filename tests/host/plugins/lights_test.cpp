#include <OpenImageIO/imageio.h>

#include <limits>
#include <numbers>
#include <random>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/light_area.h"
#include "pelk/host/plugins/light_dome.h"
#include "pelk/host/plugins/light_point.h"
#include "pelk/host/plugins/light_sphere.h"
#include "pelk/host/plugins/light_spot.h"
#include "pelk/host/plugins/light_sun.h"
#include "pelk/host/plugins/tex_gradient.h"
#include "pelk/host/plugins/tex_image.h"
#include "pelk/host/plugins/uvwgen_environment.h"
#include "pelk/host/trace/render_context.h"
#include "recording_log.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr double kPi = std::numbers::pi;

/// Both ways of finding a light must see the same light: the integral of its radiance by its own
/// samples and by directions spread evenly over the sphere, and the same densities.
template <class Light>
void expectBothWaysAgree(PluginHolder<Light>& holder, const Point& from, double expected) {
    Light& light = holder.plugin;
    holder.prepare(SceneBounds{});
    RenderContext context;
    context.hitPoint = from;
    std::mt19937 random(5);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    constexpr int kCount = 200000;
    double bySamples = 0, byDirections = 0;
    for (int i = 0; i < kCount; ++i) {
        LightSample sample;
        if (light.sample(context, unit(random), unit(random), sample)) {
            ASSERT_NEAR(length(sample.direction), 1.0f, 1e-4f);
            bySamples += sample.radiance.g / sample.density;
            LightHit hit;
            // At the very rim rounding may miss.
            if (i < 1000 && light.intersect(from, sample.direction, 0.0, kRayFar, hit)) {
                EXPECT_NEAR(hit.density / sample.density, 1.0f, 2e-3f);
                EXPECT_EQ(hit.radiance, sample.radiance);
                EXPECT_NEAR(hit.distance / sample.distance, 1.0, 1e-3);
            }
        }
        const float y = 1 - 2 * unit(random), r = std::sqrt(std::max(0.0f, 1 - y * y));
        const float phi = unit(random) * 2 * static_cast<float>(kPi);
        LightHit hit;
        if (light.intersect(from, {r * std::cos(phi), y, r * std::sin(phi)}, 0.0, kRayFar, hit))
            byDirections += hit.radiance.g * 4 * kPi;
    }
    EXPECT_NEAR(bySamples / kCount / expected, 1.0, 0.01);
    EXPECT_NEAR(byDirections / kCount / expected, 1.0, 0.03);
}

TEST(LightTest, AreaShinesFromItsFrontAlone) {
    PluginHolder<LightArea> area{{"position", Color(1, 3, 0)},
                                 {"direction", Color(0, -2, 0)},
                                 {"width", 2.0f},
                                 {"intensity", 5.0f}};
    // The solid angle of a rectangle a x b seen from below its centre at distance d:
    // 4 asin(ab / sqrt((a2 + 4 d2)(b2 + 4 d2))).
    const double solid = 4 * std::asin(2.0 * 1.0 / std::sqrt((4.0 + 36.0) * (1.0 + 36.0)));
    expectBothWaysAgree(area, {1, 0, 0}, 5.0 * solid);

    RenderContext above;
    above.hitPoint = {1, 5, 0};
    LightSample sample;
    LightHit hit;
    EXPECT_FALSE(area.plugin.sample(above, 0.5f, 0.5f, sample));
    EXPECT_FALSE(area.plugin.intersect({1, 5, 0}, {0, -1, 0}, 0, kRayFar, hit));
}

TEST(LightTest, SphereAndSunAreSeenAsTheirCones) {
    PluginHolder<LightSphere> sphere{{"position", Color(0, 4, 0)}, {"radius", 1.5f}};
    expectBothWaysAgree(sphere, {}, 2 * kPi * (1 - std::sqrt(1 - 1.5 * 1.5 / 16)));
    PluginHolder<LightSun> sun{
        {"direction", Color(1, -1, 0)}, {"angle", 20.0f}, {"intensity", 3.0f}};
    const double r = 10 * kPi / 180;
    // A facing surface gets its intensity: radiance 3 / sin2 over the cap.
    expectBothWaysAgree(sun, {}, 3 / (std::sin(r) * std::sin(r)) * 2 * kPi * (1 - std::cos(r)));
}

/// Irradiance / pi that a delta light sends to a point; 0 where it sends none.
template <class Light>
float arriving(PluginHolder<Light>& holder, const Point& at) {
    holder.prepare(SceneBounds{});
    EXPECT_FALSE(holder.plugin.hasExtent());
    RenderContext context;
    context.hitPoint = at;
    LightSample sample;
    if (!holder.plugin.sample(context, 0.3f, 0.6f, sample))
        return 0.0f;
    EXPECT_EQ(sample.density, 0.0f);
    const Point end = at + sample.direction * static_cast<float>(sample.distance);
    EXPECT_NEAR(length(end - Point{1, 2, 3}), 0.0f, 1e-5f);
    return sample.radiance.g;
}

TEST(LightTest, PointWeakensWithTheSquareOfTheDistanceAndSpotFromItsInnerConeToItsEdge) {
    PluginHolder<LightPoint> point{{"position", Color(1, 2, 3)}, {"intensity", 9.0f}};
    EXPECT_NEAR(arriving(point, {1, 1, 3}), 9.0f, 1e-5f) << "one unit away";
    EXPECT_NEAR(arriving(point, {1, 2, 0}), 1.0f, 1e-6f);
    EXPECT_EQ(arriving(point, {1, 2, 3}), 0.0f) << "at the light itself";

    PluginHolder<LightSpot> spot{{"position", Color(1, 2, 3)},
                                 {"direction", Color(0, -5, 0)},
                                 {"angle", 60.0f},
                                 {"intensity", 4.0f}};
    const double middle = std::acos((std::cos(kPi / 9) + std::cos(kPi / 6)) / 2) * 180 / kPi;
    // Falloff, degrees off the axis, what arrives.
    const double cases[][3] = {{10, 0, 1},   {10, 19.9, 1}, {10, middle, 0.5}, {10, 30.1, 0},
                               {10, 180, 0}, {0, 29.9, 1},  {0, 30.1, 0}};
    for (const auto& [falloff, degrees, expected] : cases) {
        spot.set("falloff", static_cast<float>(falloff));
        const Point at{1 + 2 * std::sin(degrees * kPi / 180), 2 - 2 * std::cos(degrees * kPi / 180),
                       3};
        EXPECT_NEAR(arriving(spot, at), expected, expected == 0.5 ? 1e-4 : 1e-6) << degrees;
    }
}

TEST(LightTest, DomeSamplesWhatItShows) {
    PluginHolder<UVWGenEnvironment> mapping;
    PluginHolder<TexGradient> sky{{"form", 1}};  // dark below, bright above
    sky.startFrame();
    PluginHolder<LightDome> dome{{"intensity", 0.5f}};
    expectBothWaysAgree(dome, {1, 2, 3}, 0.5 * 4 * kPi);
    dome.set("texture", &sky.plugin);
    expectBothWaysAgree(dome, {0, 0, 0}, 0.5 * 2 * kPi);
    sky.set("uvwgen", &mapping.plugin);
    sky.startFrame();
    dome.set("rotate", Color(90, 0, 0));  // bright on the side of +Z
    expectBothWaysAgree(dome, {0, 0, 0}, 0.5 * 2 * kPi);
    LightHit hit;
    EXPECT_TRUE(dome.plugin.intersect({}, {0, 0, 1}, 0, kRayFar, hit));
    EXPECT_EQ(hit.radiance.g, 0.5f);

    // The sky goes once around from its middle at -Z.
    RenderContext context;
    context.rayDir = normalizeGuarded({1, 0, -1});
    EXPECT_NEAR(length(mapping.plugin.getUVW(context) - Vector(0.625f, 0.5f, 0)), 0.0f, 1e-5f);
}

/// A dark sky of few pixels, no multiple of the table's tiles, with suns at a pole, on the seam and
/// inside, and pixels that can't be light.
class DomeImageTest : public testing::Test {
protected:
    static constexpr int kWidth = 18, kHeight = 9;

    DomeImageTest() {
        for (float& value : pixels)
            value = unit(random) < 0.5f ? 0.0f : 0.1f * unit(random);
        for (const int sun : {4, 5 * kWidth - 1, 6 * kWidth + 7})
            pixels[static_cast<std::size_t>(sun)] = 3730;
        pixels[3 * kWidth + 3] = -40;
        pixels[2 * kWidth + 9] = std::numeric_limits<float>::quiet_NaN();
        const OIIO::ImageSpec spec(kWidth, kHeight, 1, OIIO::TypeDesc::FLOAT);
        const auto output = OIIO::ImageOutput::create(file);
        EXPECT_TRUE(output && output->open(file, spec) &&
                    output->write_image(spec.format, pixels.data()) && output->close());
        pixels[2 * kWidth + 9] = 0;
        map.set("rotation", 30.0f);
        map.startFrame();
        texture.set("file", file.c_str());
        dome.set("texture", &texture.plugin);
        dome.plugin.setPluginName("sky");
        dome.renderer.sequenceData.log = &log;
    }

    /// The plain way: interpolated around the image, and constant towards the poles.
    double lookUp(double u, double v) const {
        const double x = u * kWidth - 0.5, y = std::clamp(v * kHeight - 0.5, 0.0, kHeight - 1.0);
        double sum = 0;
        for (int i = 0; i < kHeight; ++i) {
            for (int j = -1; j <= kWidth; ++j)
                sum += std::max(0.0, 1 - std::fabs(x - j)) * std::max(0.0, 1 - std::fabs(y - i)) *
                       pixels[static_cast<std::size_t>(i * kWidth + (j + kWidth) % kWidth)];
        }
        return sum;
    }

    std::mt19937 random{7};
    std::uniform_real_distribution<float> unit{0.0f, 1.0f};
    std::vector<float> pixels = std::vector<float>(kWidth * kHeight);
    TemporaryDirectory dir;
    std::string file = dir.file("sky.exr");
    RecordingLog log;
    PluginHolder<UVWGenEnvironment> map;
    PluginHolder<TexImage> texture;
    PluginHolder<LightDome> dome;
};

TEST_F(DomeImageTest, EveryPixelIsSampledAsItShinesHoweverTheSkyIsTurned) {
    for (const bool turned : {false, true}) {
        if (turned) {
            texture.set("uvwgen", &map.plugin);
            dome.set("rotate", Color(0, 90, 0));
        }
        texture.startFrame();
        log.texts.clear();
        dome.prepare(SceneBounds{});
        EXPECT_THAT(log.texts, ElementsAre(AllOf(HasSubstr("\"sky\": 1 pixels of \"" + file),
                                                 HasSubstr("down to -40")),
                                           HasSubstr("1 pixels of \"" + file)));
        // Over the sphere: the light, its magnitude, the density; 32 x 32 places a pixel.
        double light = 0, magnitude = 0, density = 0;
        constexpr int kFine = 32;
        for (int i = 0; i < kHeight * kFine; ++i) {
            for (int j = 0; j < kWidth * kFine; ++j) {
                const double u = (j + 0.5) / (kWidth * kFine), v = (i + 0.5) / (kHeight * kFine);
                const double longitude = (u - 0.5 + (turned ? 30 / 360.0 : 0)) * 2 * kPi,
                             sine = std::sin(v * kPi);
                const double x = sine * std::sin(longitude), z = -sine * std::cos(longitude);
                const Vector direction(float(turned ? z : x), float(std::cos(v * kPi)),
                                       float(turned ? -x : z));
                LightHit hit;
                ASSERT_TRUE(dome.plugin.intersect({}, direction, 0, kRayFar, hit));
                const double expected = lookUp(u, v);
                ASSERT_NEAR(hit.radiance.r, expected, 0.02 + 1e-3 * std::fabs(expected));
                const double solid = 2 * kPi * kPi * sine / (kWidth * kHeight * kFine * kFine);
                light += expected * solid;
                magnitude += std::fabs(expected) * solid;
                density += hit.density * solid;
            }
        }
        EXPECT_NEAR(density, 1.0, 2e-3);
        RenderContext context;
        double sum = 0;
        constexpr int kCount = 100000;
        for (int i = 0; i < kCount; ++i) {
            LightSample sample;
            LightHit hit;
            ASSERT_TRUE(dome.plugin.sample(context, unit(random), unit(random), sample));
            ASSERT_TRUE(dome.plugin.intersect({}, sample.direction, 0, kRayFar, hit));
            ASSERT_NEAR(hit.density, sample.density, 0.01f * sample.density + 1e-5f);
            const double value = sample.radiance.g / sample.density;
            // The tents of the first row reach where the sine is 2.9 times that of its middle.
            ASSERT_LT(std::fabs(value), 3 * magnitude) << "sparkles";
            sum += value;
        }
        EXPECT_NEAR(sum / kCount / light, 1.0, 0.01);
    }
}

}  // namespace
}  // namespace Tarnkit
