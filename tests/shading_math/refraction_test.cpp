#include "pelk/shading_math/refraction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace Tarnkit {
namespace {

/// Rays against and along random normals, with the index of a ratio of clear media.
class RefractionTest : public testing::Test {
protected:
    struct Case {
        Vector d, m;
        float n;
    };

    Vector direction() { return normalizeGuarded({even(random), even(random), even(random)}); }
    Case any() { return {direction(), direction(), 1.0f + 0.8f * even(random)}; }

    std::mt19937 random{7};
    std::uniform_real_distribution<float> even{-1.0f, 1.0f};
};

/// The reflectance of one medium to the other by the angles themselves, in double.
double fresnelByAngles(double incident, double refracted) {
    const double minus = incident - refracted, plus = incident + refracted;
    const double s = std::sin(minus) / std::sin(plus), p = std::tan(minus) / std::tan(plus);
    return 0.5 * (s * s + p * p);
}

TEST_F(RefractionTest, ObeysSnellAndFresnelAndLeadsBackTheWayItCame) {
    int refractedRays = 0, totals = 0;
    for (int i = 0; i < 2000; ++i) {
        const Case c = any();
        const bool leaves = dot(c.m, c.d) >= 0.0f;
        const float eta = leaves ? c.n : 1.0f / c.n;
        const Refraction ray = refract(c.d, c.m, c.n, {}, {});
        EXPECT_NEAR(length(ray.direction), 1.0f, 1e-5f);
        const Vector sine = cross(c.m, c.d);
        if (ray.total) {
            ++totals;
            EXPECT_GE(eta * length(sine), 1.0f - 1e-5f);
            EXPECT_NEAR(dot(ray.direction, c.m), -dot(c.d, c.m), 1e-5f);
            continue;
        }
        ++refractedRays;
        const double incident = std::acos(std::fabs(dotDouble(c.d, c.m)));
        const double inside = std::acos(std::fabs(dotDouble(ray.direction, c.m)));
        if (incident >= 0.05 && std::fabs(c.n - 1.0f) >= 0.02f) {  // elsewhere 0 / 0
            const float share = fresnelDielectric(c.d, c.m, ray.direction, c.n);
            EXPECT_NEAR(share, fresnelByAngles(incident, inside), 2e-3);
            EXPECT_NEAR(fresnelDielectric(-ray.direction, c.m, -c.d, c.n), share, 1e-5f);
        }
        // The sines as vectors: in the ratio of the indices, and in one plane.
        EXPECT_LE(length(cross(c.m, ray.direction) - eta * sine), 1e-5f);
        EXPECT_EQ(dot(c.m, ray.direction) >= 0.0f, leaves);
        const float s = std::fabs(dot(c.m, ray.direction));
        // Near the critical angle the way back divides rounding errors by a small cosine.
        if (std::min(s, std::fabs(dot(c.m, c.d))) > 0.05f) {
            EXPECT_LE(length(refract(-ray.direction, c.m, c.n, {}, {}).direction + c.d), 1e-4f)
                << s;
        }
    }
    EXPECT_GT(refractedRays, 500);
    EXPECT_GT(totals, 100);
}

TEST_F(RefractionTest, DifferentialsAreTheDerivativesOfTheDirection) {
    constexpr float kStep = 4e-3f;
    for (int i = 0; i < 1000; ++i) {
        const Case c = any();
        // Directions stay unit, so their derivatives are perpendicular to them.
        const Vector dx = normalizeGuarded(cross(c.d, direction())), dy = cross(c.d, dx);
        const Refraction ray = refract(c.d, c.m, c.n, dx, dy);
        const auto turned = [&](float step) { return c.d * std::cos(step) + dx * std::sin(step); };
        EXPECT_EQ(refract(c.d, c.m, c.n, dy, dx).derivX, ray.derivY);
        const Refraction more = refract(turned(kStep), c.m, c.n, {}, {});
        const Refraction less = refract(turned(-kStep), c.m, c.n, {}, {});
        // Near the critical angle the second derivative is without bound.
        const bool smooth = ray.total || std::fabs(dot(ray.direction, c.m)) > 0.4f;
        const bool oneSide = std::fabs(dot(c.d, c.m)) >= 2 * kStep;
        if (more.total != ray.total || less.total != ray.total || !smooth || !oneSide)
            continue;
        const Vector slope = (more.direction - less.direction) * (0.5f / kStep);
        EXPECT_LE(length(slope - ray.derivX), 3e-3f) << "total " << ray.total;
    }
}

TEST_F(RefractionTest, FresnelIsDefinedAtTheEnds) {
    const Vector up{0, 0, 1}, down{0, 0, -1}, along{1, 0, 0};
    EXPECT_EQ(fresnelDielectric(along, up, along, 1.0f), 0.0f) << "no surface, at any angle";
    EXPECT_NEAR(fresnelDielectric(down, up, down, 1.5f), 0.04f, 1e-7f);
    EXPECT_NEAR(fresnelDielectric(up, up, up, 1.5f), 0.04f, 1e-7f) << "leaving";
    EXPECT_NEAR(fresnelDielectric(down * 1.01f, up, down, 1.5f), 0.04f, 1e-7f) << "above 1";
    EXPECT_NEAR(fresnelDielectric(down, up, down * 1.01f, 1.5f), 0.04f, 1e-7f) << "above 1";
    const Refraction grazing = refract(along, up, 0.7f, {}, {});
    ASSERT_FALSE(grazing.total);
    EXPECT_EQ(fresnelDielectric(along, up, grazing.direction, 0.7f), 1.0f);
}

TEST_F(RefractionTest, TurnsNothingWhereTheRayRunsAlongTheSurface) {
    const Vector up{0, 0, 1}, along{1, 0, 0}, dx{0, 1e-3f, 0}, dy{0, 0, 1e-3f};
    const Refraction ray = refract(along, up, 1.5f, dx, dy);
    EXPECT_TRUE(ray.total);
    EXPECT_EQ(ray.direction, along);
    EXPECT_EQ(ray.derivX, dx);
    EXPECT_EQ(ray.derivY, dy);
}

}  // namespace
}  // namespace Tarnkit
