#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/camera_orthographic.h"
#include "pelk/host/plugins/camera_perspective.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {
namespace {

/// Rays of points of the picture lead to what is seen there, and their derivatives to the next
/// pixel.
template <class Camera>
void expectRaysGoWherePointsAreSeen(PluginHolder<Camera>& holder) {
    const Camera& camera = holder.plugin;
    holder.prepare(640, 360);
    for (const ScreenPoint at : {ScreenPoint{0, 0}, ScreenPoint{320, 180}, ScreenPoint{601.5, 7}}) {
        RenderContext ray, next;
        camera.makeRay(at.x, at.y, ray);
        camera.makeRay(at.x + 1, at.y + 1, next);
        EXPECT_NEAR(length(ray.rayDir), 1.0f, 1e-6f);
        const Vector turn = ray.rayDerivX + ray.rayDerivY;
        EXPECT_NEAR(length(ray.rayDir + turn - next.rayDir), 0.0f, 1e-4f);
        const Vector step = ray.originDerivX + ray.originDerivY;
        EXPECT_NEAR(length(next.rayOrigin - ray.rayOrigin - step), 0.0f, 1e-5f);
        ScreenPoint seen;
        ASSERT_TRUE(camera.project(ray.rayOrigin + ray.rayDir * 5.0f, seen, nullptr));
        EXPECT_NEAR(seen.x, at.x, 1e-2);
        EXPECT_NEAR(seen.y, at.y, 1e-2);
        EXPECT_FALSE(camera.project(ray.rayOrigin + -ray.rayDir, seen, nullptr)) << "behind";
    }
}

TEST(Camera, RaysGoWherePointsAreSeen) {
    PluginHolder<CameraOrthographic> parallel{{"width", 8.0f}, {"target", Color(1, 2, 0)}};
    expectRaysGoWherePointsAreSeen(parallel);
    PluginHolder<CameraPerspective> lens{
        {"position", Color(0, 1, 3.7f)}, {"target", Color(0, 1, 0)}, {"fov", 40.0f}};
    expectRaysGoWherePointsAreSeen(lens);
    RenderContext left;
    lens.plugin.makeRay(0, 180, left);
    EXPECT_NEAR(std::asin(-left.rayDir.x) * 180 / 3.14159265, 20.0, 1e-3) << "half the angle";
}

}  // namespace
}  // namespace Tarnkit
