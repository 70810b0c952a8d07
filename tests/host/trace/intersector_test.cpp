#include "pelk/host/trace/intersector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

#include "pelk/host/trace/render_context.h"

namespace Tarnkit {
namespace {

/// A closed ball of uneven triangles away from the origin, where coordinates are rounded.
Mesh unevenBall(const Vector& centre, int rings, std::mt19937& random) {
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    Mesh mesh;
    const int around = 2 * rings;
    const auto add = [&](float latitude, float longitude) {
        const float r = 1.0f + 0.1f * unit(random), s = std::sin(latitude);
        mesh.positions.push_back(
            centre +
            Vector(s * std::cos(longitude), std::cos(latitude), s * std::sin(longitude)) * r);
    };
    constexpr float kPi = std::numbers::pi_v<float>;
    add(0, 0);
    for (int i = 1; i < rings; ++i) {
        for (int j = 0; j < around; ++j)
            add((i + 0.4f * unit(random)) * kPi / rings,
                (j + 0.4f * unit(random)) * 2 * kPi / around);
    }
    add(kPi, 0);
    const u32 last = static_cast<u32>(mesh.positions.size()) - 1, n = static_cast<u32>(around);
    for (u32 j = 0; j < n; ++j) {
        const u32 k = (j + 1) % n;
        mesh.triangles.push_back({0, 1 + k, 1 + j});
        for (u32 i = 1; i + n < last; i += n) {
            mesh.triangles.push_back({i + j, i + k, i + n + j});
            mesh.triangles.push_back({i + k, i + n + k, i + n + j});
        }
        mesh.triangles.push_back({last, last - n + j, last - n + k});
    }
    return mesh;
}

TEST(Intersector, NoRayLeavesAClosedMeshThroughItsEdgesAndCorners) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::vector<std::unique_ptr<SceneObject>> objects;
    objects.push_back(std::make_unique<SceneObject>());
    const Vector centre(13, -57, 30);
    Shape shape;
    objects[0]->shape = &shape;
    Mesh& mesh = shape.mesh = unevenBall(centre, 40, random);
    Intersector intersector;
    std::string error;
    ASSERT_TRUE(intersector.build(objects, error)) << error;
    RenderContext ray, hit;
    ray.rayMaxT = kRayFar;
    constexpr int kCount = 500000;
    int leaks = 0;
    for (int i = 0; i < kCount; ++i) {
        const auto& corners = mesh.triangles[random() % mesh.triangles.size()];
        const Vector a = mesh.positions[corners[0]], b = mesh.positions[corners[1]];
        // Every fourth at a corner, the others at edges.
        const Vector target = a + (b - a) * (i % 4 == 0 ? 0.0f : unit(random));
        const Vector from =
            centre + Vector(unit(random) - 0.5f, unit(random) - 0.5f, unit(random) - 0.5f);
        ray.rayOrigin = {from.x, from.y, from.z};
        ray.rayDir = normalizeGuarded(target - from);
        u32 object;
        leaks += intersector.closest(ray, object, hit) < 0.0f;
    }
    EXPECT_EQ(leaks, 0);
}

}  // namespace
}  // namespace Tarnkit
