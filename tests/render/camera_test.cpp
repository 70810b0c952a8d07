#include "render/camera.h"

#include <gtest/gtest.h>

#include "host/plugin_parameters.h"
#include "render/host_plugin.h"
#include "render/render_context.h"

namespace Tarnkit {
namespace {

class BlankRenderer final : public PelkRenderer {
public:
    void evalEnvironment(PelkContext&) override {}
    void traceRay(PelkContext&) override {}
    StringTable* getStringTable() override { return nullptr; }
};

class CameraTest : public testing::Test {
protected:
    SingleParameter<AColor> position{"position", {Color(0, 1, 3.7f), 1}};
    SingleParameter<AColor> target{"target", {Color(0, 1, 0), 1}};
    SingleParameter<AColor> up{"up", {Color(0, 1, 0), 1}};
    FloatParameter fov{"fov", 40.0f};
    HostPluginDesc<CameraPerspective> desc;
    CameraPerspective camera{&desc};
    BlankRenderer renderer;
    std::string error;

    bool prepare(int width, int height) {
        for (PelkPluginParameter* p :
             {static_cast<PelkPluginParameter*>(&position),
              static_cast<PelkPluginParameter*>(&target), static_cast<PelkPluginParameter*>(&up),
              static_cast<PelkPluginParameter*>(&fov)})
            camera.setParameter(p);
        camera.frameBegin(renderer);
        return camera.prepare(width, height, error);
    }
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
    SingleParameter<AColor> same{"target", {Color(0, 1, 3.7f), 1}};
    prepare(8, 8);
    camera.setParameter(&same);
    camera.frameBegin(renderer);
    EXPECT_FALSE(camera.prepare(8, 8, error));
    FloatParameter wide{"fov", 180.0f};
    camera.setParameter(&target);
    camera.setParameter(&wide);
    camera.frameBegin(renderer);
    EXPECT_FALSE(camera.prepare(8, 8, error));
    EXPECT_EQ(error, "fov must lie between 0 and 180 degrees");
}

}  // namespace
}  // namespace Tarnkit
