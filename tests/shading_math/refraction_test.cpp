#include "pelk/shading_math/refraction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "fake_host/dice.h"

using namespace Tarnkit;

namespace {

/// Rays against and along random normals.
class RefractionTest : public testing::Test, protected Dice {
protected:
    /// The ratio of the indices of clear media.
    float index() { return between(0.2f, 1.8f); }
};

/// The reflectance of one medium to the other by the angles themselves, in double.
double fresnelByAngles(double incident, double refracted) {
    const double minus = incident - refracted, plus = incident + refracted;
    const double s = std::sin(minus) / std::sin(plus), p = std::tan(minus) / std::tan(plus);
    return 0.5 * (s * s + p * p);
}

TEST_F(RefractionTest, ObeysSnellAndFresnelAndLeadsBackTheWayItCame) {
    for (int i = 0; i < 2000; ++i) {
        const Vector d = direction(), m = direction();
        const float n = index();
        const bool leaves = dot(m, d) >= 0.0f;
        const float eta = leaves ? n : 1.0f / n;
        const Refraction ray = refract(d, m, n, {}, {});
        EXPECT_NEAR(length(ray.direction), 1.0f, 1e-5f);
        const Vector sine = cross(m, d);
        if (ray.total) {
            EXPECT_GE(eta * length(sine), 1.0f - 1e-5f);
            EXPECT_NEAR(dot(ray.direction, m), -dot(d, m), 1e-5f);
            continue;
        }
        const double incident = std::acos(std::fabs(dotDouble(d, m)));
        const double inside = std::acos(std::fabs(dotDouble(ray.direction, m)));
        if (incident >= 0.05 && std::fabs(n - 1.0f) >= 0.02f) {  // elsewhere 0 / 0
            const float share = fresnelDielectric(d, m, ray.direction, n);
            EXPECT_NEAR(share, fresnelByAngles(incident, inside), 2e-3);
            EXPECT_NEAR(fresnelDielectric(-ray.direction, m, -d, n), share, 1e-5f);
        }
        // The sines as vectors: in the ratio of the indices, and in one plane.
        EXPECT_LE(length(cross(m, ray.direction) - eta * sine), 1e-5f);
        EXPECT_EQ(dot(m, ray.direction) >= 0.0f, leaves);
        const float s = std::fabs(dot(m, ray.direction));
        // Near the critical angle the way back divides rounding errors by a small cosine.
        if (std::min(s, std::fabs(dot(m, d))) > 0.05f) {
            EXPECT_LE(length(refract(-ray.direction, m, n, {}, {}).direction + d), 1e-4f) << s;
        }
    }
}

TEST_F(RefractionTest, DifferentialsAreTheDerivativesOfTheDirection) {
    constexpr float kStep = 4e-3f;
    for (int i = 0; i < 1000; ++i) {
        const Vector d = direction(), m = direction();
        const float n = index();
        // Directions stay unit, so their derivatives are perpendicular to them.
        const Vector dx = normalizeGuarded(cross(d, direction())), dy = cross(d, dx);
        const Refraction ray = refract(d, m, n, dx, dy);
        const auto turned = [&](float step) { return d * std::cos(step) + dx * std::sin(step); };
        const Refraction more = refract(turned(kStep), m, n, {}, {});
        const Refraction less = refract(turned(-kStep), m, n, {}, {});
        // Near the critical angle the second derivative is without bound.
        const bool smooth = ray.total || std::fabs(dot(ray.direction, m)) > 0.4f;
        const bool oneSide = std::fabs(dot(d, m)) >= 2 * kStep;
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
    EXPECT_EQ(refract(along, up, 1.5f, up, down).direction, along);
    EXPECT_EQ(refract(along, up, 1.5f, up, down).derivY, down) << "turned nothing";
}

}  // namespace
