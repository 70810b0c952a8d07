#include "render/camera.h"

#include <gtest/gtest.h>

#include "render/plugin_holder.h"
#include "render/render_context.h"

namespace Tarnkit {
namespace {

/// Rays of points of the picture lead to what is seen there, and their derivatives to the next
/// pixel.
template <class Camera>
void expectRaysGoWherePointsAreSeen(Camera& camera) {
    RenderContext middle;
    camera.makeRay(320, 180, middle);
    for (const ScreenPoint at : {ScreenPoint{0, 0}, ScreenPoint{320, 180}, ScreenPoint{601.5, 7}}) {
        RenderContext ray, next;
        camera.makeRay(at.x, at.y, ray);
        camera.makeRay(at.x + 1, at.y + 1, next);
        EXPECT_NEAR(length(ray.rayDir), 1.0f, 1e-6f);
        EXPECT_EQ(ray.rayDir, ray.rayDir2);
        const Vector turn = ray.rayDerivX + ray.rayDerivY;
        EXPECT_NEAR(length(ray.rayDir + turn - next.rayDir), 0.0f, 1e-4f);
        const Vector step = ray.originDerivX + ray.originDerivY;
        EXPECT_NEAR(length(next.rayOrigin - ray.rayOrigin - step), 0.0f, 1e-5f);
        ScreenPoint seen;
        float depth;
        ASSERT_TRUE(camera.project(ray.rayOrigin + ray.rayDir * 5.0f, seen, &depth));
        EXPECT_NEAR(depth, 5 * dot(ray.rayDir, middle.rayDir), 1e-4f);
        EXPECT_NEAR(seen.x, at.x, 1e-2);
        EXPECT_NEAR(seen.y, at.y, 1e-2);
        EXPECT_FALSE(camera.project(ray.rayOrigin + ray.rayDir * -1.0f, seen, nullptr)) << "behind";
    }
}

class CameraTest : public testing::Test {
protected:
    CameraTest() {
        holder.set("position", Color(0, 1, 3.7f));
        holder.set("target", Color(0, 1, 0));
        holder.set("fov", 40.0f);
    }
    bool prepare(int width, int height) {
        holder.startFrame();
        return camera.prepare(width, height, error);
    }

    PluginHolder<CameraPerspective> holder;
    CameraPerspective& camera = holder.plugin;
    std::string error;
};

TEST_F(CameraTest, RaysGoWherePointsAreSeen) {
    ASSERT_TRUE(prepare(640, 360)) << error;
    expectRaysGoWherePointsAreSeen(camera);
    PluginHolder<CameraOrthographic> parallel;
    parallel.set("width", 8.0f);
    parallel.set("target", Color(1, 2, 0));
    parallel.startFrame();
    ASSERT_TRUE(parallel.plugin.prepare(640, 360, error)) << error;
    expectRaysGoWherePointsAreSeen(parallel.plugin);
    parallel.set("width", 0.0f);
    parallel.startFrame();
    EXPECT_FALSE(parallel.plugin.prepare(640, 360, error));
}

TEST_F(CameraTest, TheAngleIsTheFullOneAcrossTheWidthAndUpIsUp) {
    ASSERT_TRUE(prepare(512, 512)) << error;
    RenderContext left, right, top;
    camera.makeRay(0, 256, left);
    camera.makeRay(512, 256, right);
    camera.makeRay(256, 0, top);
    EXPECT_NEAR(std::acos(dot(left.rayDir, right.rayDir)) * 180 / 3.14159265, 40.0, 1e-3);
    EXPECT_LT(left.rayDir.x, 0.0f);
    EXPECT_GT(top.rayDir.y, 0.0f);
    EXPECT_LT(top.rayDir.z, 0.0f);
}

TEST_F(CameraTest, ViewsWithoutADirectionAreRefused) {
    holder.set("target", Color(0, 1, 3.7f));
    EXPECT_FALSE(prepare(8, 8));
    holder.set("target", Color(0, 1, 0));
    holder.set("fov", 180.0f);
    EXPECT_FALSE(prepare(8, 8));
    EXPECT_EQ(error, "fov must lie between 0 and 180 degrees");
}

}  // namespace
}  // namespace Tarnkit
