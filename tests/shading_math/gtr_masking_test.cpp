#include "pelk/shading_math/gtr_masking.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tarnkit {
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

Vector towards(double cosine) {
    return {static_cast<float>(std::sqrt(1.0 - cosine * cosine)), 0.0f, static_cast<float>(cosine)};
}

TEST(GtrMasking, FollowsFromTheDistributionOfTheFacets) {
    const Vector up{0, 0, 1};
    for (float gamma : {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 2.01f, 1.5f, 3.4f}) {
        // Between its forms the masking is blended.
        const double tolerance = gamma == 1.5f ? 0.03 : gamma == 3.4f ? 0.01 : 4e-3;
        for (float alpha : {0.15f, 0.6f, 1.0f}) {
            for (double cosine : {0.9, 0.5, 0.15}) {
                SCOPED_TRACE(testing::Message() << gamma << " " << alpha << " " << cosine);
                EXPECT_NEAR(gtrMasking(towards(cosine), up, up, alpha, gamma, 0),
                            maskingByIntegral(cosine, alpha, gamma), tolerance);
            }
        }
    }
}

TEST(GtrMasking, IsNeverNaNAndEndsAtTheSurface) {
    const Vector up{0, 0, 1};
    for (float gamma : {-1.0f, 0.0f, 0.99f, 1.0f, 2.02f, 3.0f, 3.99f, 40.0f}) {
        EXPECT_EQ(gtrMasking(towards(0.5), {0, 0, -1}, up, 0.5f, gamma, 0), 0.0f);
        for (float alpha : {0.0f, 1e-20f, 1e-3f, 0.9999999f, 1.0f, 1e10f, NAN}) {
            for (double cosine : {0.0009, 0.0011, 0.3, 0.99999, 1.0}) {
                const float g = gtrMasking(towards(cosine), up, up, alpha, gamma, 0);
                EXPECT_TRUE(g >= 0.0f && g <= 1.0f) << g << " " << alpha << " " << gamma;
            }
        }
    }
}

TEST(GtrMasking, TailsNearAClosedFormTakeIt) {
    const Vector up{0, 0, 1}, w = towards(0.3);
    const auto masking = [&](float gamma) { return gtrMasking(w, up, up, 0.4f, gamma, 0); };
    const float ggx = gtrMasking(w, up, up, 0.4f, 0.5f, 1);
    EXPECT_EQ(masking(2.009f), ggx);
    EXPECT_EQ(masking(1.991f), ggx);
    EXPECT_EQ(masking(1.009f), masking(1.0f));
    EXPECT_EQ(masking(2.991f), masking(3.0f));
    EXPECT_EQ(masking(3.991f), masking(4.0f));
    for (float gamma : {1.98f, 2.02f}) {
        EXPECT_NE(masking(gamma), ggx) << "from the spline";
        EXPECT_NEAR(masking(gamma), ggx, 0.01f);
    }
}

}  // namespace
}  // namespace Tarnkit
