#include "render/camera.h"

#include <gtest/gtest.h>

#include "render/plugin_holder.h"
#include "render/render_context.h"

namespace Tarnkit {
namespace {

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
    for (const ScreenPoint at : {ScreenPoint{0, 0}, ScreenPoint{320, 180}, ScreenPoint{601.5, 7}}) {
        RenderContext context;
        camera.makeRay(at.x, at.y, context);
        EXPECT_NEAR(length(context.rayDir), 1.0f, 1e-6f);
        EXPECT_EQ(context.rayDir, context.rayDir2);
        ScreenPoint seen;
        float depth;
        ASSERT_TRUE(camera.project(context.rayOrigin + context.rayDir * 5.0f, seen, &depth));
        EXPECT_NEAR(seen.x, at.x, 1e-2);
        EXPECT_NEAR(seen.y, at.y, 1e-2);
        // The derivatives lead to the next pixel.
        RenderContext next;
        camera.makeRay(at.x + 1, at.y + 1, next);
        const Vector step = context.rayDerivX + context.rayDerivY;
        EXPECT_NEAR(length(context.rayDir + step - next.rayDir), 0.0f, 1e-4f);
    }
    ScreenPoint seen;
    EXPECT_FALSE(camera.project({0, 1, 4}, seen, nullptr)) << "behind the camera";
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
