#include "pelk/shading_math/gtr_lobe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

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

/// What must hold of sampling and evaluation together, by sums over random directions.
TEST(GtrLobe, SamplesWhatItEvaluates) {
    const struct {
        const char* what;
        int type;
        float gamma, alpha;
        bool mixed;
    } cases[] = {
        {"ggx", kGtrGgx, 2, 0.4f, false},
        {"tail one", kGtrTailOne, 1, 0.3f, false},
        {"free tail", kGtrFreeTail, 1.6f, 0.3f, false},
        {"mixed", kGtrGgx, 2, 0.3f, true},
    };
    Matrix frame;  // tilted, so that spaces can't be mistaken for one another
    frame.columns[0] = {0.8f, 0, -0.6f};
    frame.columns[2] = {0.6f, 0, 0.8f};
    const Matrix local = transposed(frame);
    const Vector n = frame.columns[2], d = frame * Vector(-0.6f, 0.0f, -0.8f);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        constexpr int kCount = 200000;
        double bySamples = 0, byDirections = 0, density = 0, above = 0;
        for (int i = 0; i < kCount; ++i) {
            const float u = unit(random), v = unit(random);
            float pdf, weight, evalPdf;
            const Vector r =
                c.mixed ? sampleGTRMixed(u, v, c.alpha, c.type, c.gamma, d, frame, pdf, weight, 0,
                                         local)
                        : sampleGTR(u, v, c.alpha, c.type, c.gamma, d, frame, pdf, weight, 0);
            bySamples += weight;
            above += dot(n, r) > 0.0f;
            const auto eval = c.mixed ? evalGTRMixed : evalGTR;
            const auto pdfOf = c.mixed ? gtrPdfMixed : gtrPdf;
            if (i < 1000 && weight > 0.0f && pdf < 1e17f) {
                ASSERT_NEAR(length(r), 1.0f, 1e-4f);
                const float value =
                    eval(d, r, c.alpha, c.type, c.gamma, n, frame, local, evalPdf, 0);
                EXPECT_NEAR(value / pdf / weight, 1.0f, 5e-3f);
                EXPECT_NEAR(evalPdf / pdf, 1.0f, 5e-3f);
                EXPECT_NEAR(pdfOf(r, c.alpha, c.type, c.gamma, n, d) / pdf, 1.0f, 5e-3f);
            }
            const float z = unit(random), s = std::sqrt(1.0f - z * z);
            const float phi = unit(random) * 2.0f * static_cast<float>(kPi);
            const Vector even = frame * Vector(s * std::cos(phi), s * std::sin(phi), z);
            // The hemisphere's 2 pi is what both numbers are scaled by.
            byDirections += eval(d, even, c.alpha, c.type, c.gamma, n, frame, local, evalPdf, 0);
            density += evalPdf;
        }
        EXPECT_NEAR(bySamples / byDirections, 1.0, 0.03);
        EXPECT_LE(bySamples / kCount, 1.005) << "more light comes back than arrived";
        EXPECT_NEAR(density / above, 1.0, 0.03);
    }
}

TEST(GtrLobe, AnswersNothingWhereNothingIsSeen) {
    const Matrix frame;
    const Vector n{0, 0, 1}, d{0, 0, -1}, along{1, 0, 0};
    float pdf, weight = 9;
    EXPECT_EQ(sampleGTR(1.0f, 0.5f, 0.5f, kGtrGgx, 2, d, frame, pdf, weight, 0), n);
    EXPECT_EQ(weight, 0.0f) << "a facet that lies flat";
    weight = 9;
    sampleGTR(0.3f, 0.5f, 0.5f, kGtrGgx, 2, along, frame, pdf, weight, 0);
    EXPECT_EQ(weight, 0.0f) << "a view along the surface";
    EXPECT_EQ(evalGTR(d, along, 0.5f, kGtrGgx, 2, n, frame, frame, pdf, 0), 0.0f);
    EXPECT_EQ(pdf, 0.0f);
}

}  // namespace
}  // namespace Tarnkit
