// What spawned rays take over from the hit.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "pelk/contract/shading.h"
#include "pelk/host/trace/host_renderer.h"
#include "pelk/shading_math/refraction.h"

namespace Tarnkit {
namespace {

class RenderContextTest : public testing::Test {
protected:
    RenderContextTest() {
        renderer.objects.push_back(std::make_unique<SceneObject>());
        renderer.objects[0]->shape = &plane;
        plane.faceNormals.resize(1);
        for (RenderContext& ray : rays) {
            ray = {};
            ray.threadData = &thread;
        }
    }
    Vector vector() { return {even(random), even(random), even(random)}; }

    /// Has the ray meet the plane through `point`.
    void meet(RenderContext& ray, Point point) {
        const Vector n = plane.faceNormals[0];
        const float distance = dot(point - ray.rayOrigin, n) / dot(ray.rayDir, n);
        renderer.fillHit(ray, 0, distance);
    }

    Shape plane;
    HostRenderer renderer;
    RenderThread thread{renderer, 0};
    RenderContext rays[2];
    std::mt19937 random{4};
    std::uniform_real_distribution<float> even{-1, 1};
};

TEST_F(RenderContextTest, DifferentialsAreThoseOfTheNextPixelsRay) {
    constexpr float kStep = 1e-3f;
    int tame = 0;
    for (int round = 0; round < 500; ++round) {
        RenderContext& first = rays[0];
        first.rayOrigin = {};
        first.rayDir = normalizeGuarded(vector());
        first.originDerivX = cross(first.rayDir, vector());
        first.rayDerivX = cross(first.rayDir, vector());
        rays[1].rayOrigin = first.rayOrigin + first.originDerivX * kStep;
        rays[1].rayDir = normalizeGuarded(first.rayDir + first.rayDerivX * kStep);
        // Off or through two planes one after the other, each before the first ray.
        RenderContext* pair[] = {&rays[0], &rays[1]};
        std::vector<RenderContext*> spawned;
        bool isTame = true;
        for (int bounce = 0; bounce < 2; ++bounce) {
            const Vector n = plane.faceNormals[0] = normalizeGuarded(vector());
            const Point place = pair[0]->rayOrigin + pair[0]->rayDir * 2.0f;
            const bool refracts = random() % 2;
            for (RenderContext*& ray : pair) {
                meet(*ray, place);
                const Refraction bent =
                    refract(ray->rayDir, n, 1.2f, ray->rayDerivX, ray->rayDerivY);
                isTame = isTame && std::fabs(dot(ray->rayDir, n)) > 0.3f && !bent.total;
                PelkContext& next = *ray->newSpawnedContext(0, Color(1), kRayReflect, {});
                setMirrorRay(*ray, next, refracts ? bent.direction : mirrorDirection(*ray));
                if (refracts)
                    next.rayDerivX = bent.derivX;
                spawned.push_back(ray = &hostContext(next));
            }
        }
        const Vector way = (pair[1]->rayOrigin - pair[0]->rayOrigin) * (1 / kStep);
        const Vector turn = (pair[1]->rayDir - pair[0]->rayDir) * (1 / kStep);
        if (isTame) {
            EXPECT_LT(length(pair[0]->originDerivX - way), 0.02f * (1 + length(way))) << round;
            EXPECT_LT(length(pair[0]->rayDerivX - turn), 0.02f * (1 + length(turn))) << round;
        }
        tame += isTame;
        for (RenderContext* context : spawned)
            context->releaseContext();
    }
    EXPECT_GT(tame, 100);
}

class Medium final : public PelkVolume {
public:
    PluginBase* getPlugin() override { return nullptr; }
    float getIOR(PelkContext&) override { return 1; }
};

TEST_F(RenderContextTest, MediaEndWhereTheirOwnSurfaceIsLeft) {
    plane.faceNormals[0] = {0, 0, 1};
    Medium media[4];
    for (int round = 0; round < 300; ++round) {
        RenderContext& ray = rays[0];
        ray.numVolumes = 0;
        std::vector<PelkVolume*> within;
        for (int step = 0; step < 40; ++step) {
            PelkVolume* const medium = random() % 5 ? &media[random() % 4] : nullptr;
            const auto last = std::find(within.rbegin(), within.rend(), medium);
            const bool leaves = within.size() == 8 || random() % 2;
            if (!leaves)
                within.push_back(medium);
            else if (last != within.rend())
                within.erase(last.base() - 1);
            else if (!medium && !within.empty())
                within.pop_back();
            ray.rayDir = {0, 0, leaves ? 1.0f : -1.0f};
            meet(ray, {});
            ray.surfaceVolume = medium;
            PelkContext* const through = ray.newSpawnedContext(0, Color(1), kRayRefract, {});
            for (PelkVolume* const skip : {static_cast<PelkVolume*>(nullptr), medium}) {
                const auto seen = std::find_if(within.rbegin(), within.rend(),
                                               [&](PelkVolume* v) { return v && v != skip; });
                EXPECT_EQ(through->currentVolume(skip), seen == within.rend() ? nullptr : *seen);
            }
            ray.numVolumes = hostContext(*through).numVolumes;
            std::copy_n(hostContext(*through).volumes, ray.numVolumes, ray.volumes);
            through->releaseContext();
        }
    }
}

}  // namespace
}  // namespace Tarnkit
