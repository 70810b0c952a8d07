#include "pelk/shading_math/gtr_masking.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Tarnkit;

namespace {

constexpr double kPi = std::numbers::pi;

/// Facets per projected area, unscaled: what the tail means.
double facets(double cosine, double alpha, double gamma) {
    return std::pow(1.0 + cosine * cosine * (alpha * alpha - 1.0), -gamma);
}

/// The masking that follows from the distribution: what a direction sees of all facets must add up
/// to what it sees of the surface. Smith, in the notation of Walter et al., EGSR 2007, eq. 4.
double maskingByIntegral(double cosine, double alpha, double gamma) {
    constexpr int kSteps = 1200;
    const double sine = std::sqrt(1.0 - cosine * cosine);
    double all = 0.0, seen = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        // Steps that are fine where narrow lobes stand.
        const double t = (i + 0.5) / kSteps, angle = t * t * kPi / 2, step = 2 * t * kPi / 2;
        const double c = std::cos(angle), s = std::sin(angle);
        const double density = facets(c, alpha, gamma) * s * step;
        all += density * c * 2 * kPi;
        for (int k = 0; k < 400; ++k) {
            const double facing = cosine * c + sine * s * std::cos((k + 0.5) * kPi / 400);
            seen += density * std::max(0.0, facing) * 2 * kPi / 400;
        }
    }
    return cosine / (seen / all);
}

float masking(double cosine, float alpha, float gamma, int maskMode = 0) {
    const Vector up{0, 0, 1};
    const auto c = static_cast<float>(cosine);
    return gtrMasking({std::sqrt(1 - c * c), 0, c}, up, up, alpha, gamma, maskMode);
}

TEST(GtrMasking, FollowsFromTheDistributionOfTheFacets) {
    for (float gamma : {0.0f, 1.0f, 1.009f, 1.991f, 2.0f, 3.0f, 4.0f, 2.01f, 1.5f, 3.4f}) {
        // Between its forms the masking is blended.
        const double tolerance = gamma == 1.5f ? 0.03 : gamma == 3.4f ? 0.01 : 4e-3;
        for (float alpha : {0.15f, 0.6f, 1.0f}) {
            for (double cosine : {0.9, 0.5, 0.15}) {
                SCOPED_TRACE(testing::Message() << gamma << " " << alpha << " " << cosine);
                const double expected = maskingByIntegral(cosine, alpha, gamma);
                EXPECT_NEAR(masking(cosine, alpha, gamma), expected, tolerance);
                if (gamma == 2.0f) {
                    EXPECT_NEAR(masking(cosine, alpha, 0.5f, 1), expected, tolerance);
                }
            }
        }
    }
}

TEST(GtrMasking, IsNeverNaNAndEndsAtTheSurface) {
    for (float gamma : {-1.0f, 0.0f, 0.99f, 1.0f, 2.02f, 3.0f, 3.99f, 40.0f}) {
        EXPECT_EQ(gtrMasking({0, 0, 1}, {0, 0, -1}, {0, 0, 1}, 0.5f, gamma, 0), 0.0f);
        for (float alpha : {0.0f, 1e-20f, 1e-3f, 0.9999999f, 1.0f, 1e10f, NAN}) {
            for (double cosine : {0.0009, 0.0011, 0.3, 0.99999, 1.0}) {
                const float g = masking(cosine, alpha, gamma);
                EXPECT_TRUE(g >= 0.0f && g <= 1.0f) << g << " " << alpha << " " << gamma;
            }
        }
    }
}

}  // namespace
