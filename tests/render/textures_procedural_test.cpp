#include "render/textures_procedural.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "render/plugin_holder.h"

namespace Tarnkit {
namespace {

/// Texture coordinates that are the hit point.
class PlaceUVW final : public Plugin, public UVWGenInterface {
public:
    PluginInterface* getInterface(u64 id) override {
        return id == EXT_UVWGEN ? static_cast<UVWGenInterface*>(this) : Plugin::getInterface(id);
    }
    PluginBase* getPlugin() override { return this; }
    Vector getUVW(PelkContext& context) override { return context.hitPoint - Point(); }
    Transform getTangentFrame(PelkContext&, int&) override { return {}; }
};

template <class T>
class TextureAt : public PluginHolder<T> {
public:
    TextureAt() { this->set("uvwgen", static_cast<PluginBase*>(&place)); }
    float at(Point point, Vector direction = {0, 0, -1}) {
        this->startFrame();
        RenderContext context;
        context.hitPoint = point;
        context.normal = {0, 0, 1};
        context.rayDir = direction;
        return this->plugin.getTexFloat(context);
    }

private:
    PlaceUVW place;
};

TEST(ProceduralTextures, BlendFromTheFirstColourToTheSecond) {
    TextureAt<TexGradient> gradient;
    const struct {
        int form;
        Point place;
        float expected;
    } cases[] = {{0, {0.25, 0.9, 0}, 0.25f}, {0, {-3, 0, 0}, 0.0f},     {0, {7, 0, 0}, 1.0f},
                 {1, {0.25, 0.9, 0}, 0.9f},  {2, {0.5, 0.75, 0}, 0.5f}, {2, {0.5, 0.5, 0}, 0.0f}};
    for (const auto& c : cases) {
        gradient.set("form", c.form);
        EXPECT_NEAR(gradient.at(c.place), c.expected, 1e-6f) << c.form << " " << c.place.x;
    }
    TextureAt<TexFacing> facing;
    facing.set("power", 2.0f);
    EXPECT_EQ(facing.at({}, {0, 0, -1}), 0.0f);
    EXPECT_EQ(facing.at({}, {0, 1, 0}), 1.0f);
    EXPECT_NEAR(facing.at({}, {0.6f, 0, 0.8f}), 0.04f, 1e-6f) << "seen from behind";
}

TEST(ProceduralTextures, NoiseIsSmoothEvenAndCentred) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(-1000.0, 1000.0);
    double sum = 0, squares = 0;
    for (int i = 0; i < 20000; ++i) {
        const double x = unit(random), y = unit(random), z = unit(random);
        const float value = gradientNoise(x, y, z);
        ASSERT_LE(std::fabs(value), 1.05f);
        ASSERT_NEAR(gradientNoise(x + 1e-3, y, z), value, 6e-3f);
        sum += value;
        squares += value * value;
    }
    EXPECT_NEAR(sum / 20000, 0.0, 0.01);
    EXPECT_NEAR(squares / 20000, 0.07, 0.02);
    EXPECT_EQ(gradientNoise(-3, 7, 1e12), 0.0f);
    TextureAt<TexNoise> noise;
    EXPECT_EQ(noise.at({5, -2, 3}), 0.5f);
}

}  // namespace
}  // namespace Tarnkit
