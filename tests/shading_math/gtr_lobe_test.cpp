#include "pelk/shading_math/gtr_lobe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace Tarnkit {
namespace {

constexpr double kPi = std::numbers::pi;

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

TEST(GtrLobe, ValueTimesTheCosineOfTheViewIsSymmetric) {
    const Matrix frame;
    const Vector n{0, 0, 1};
    std::mt19937 random(4);
    std::uniform_real_distribution<float> unit(0.02f, 1.0f);
    const auto above = [&] {
        return normalizeGuarded({unit(random) - 0.5f, unit(random) - 0.5f, unit(random)});
    };
    for (int i = 0; i < 3000; ++i) {
        const Vector view = above(), light = above();
        const float alpha = 0.05f + 0.9f * unit(random), gamma = 1.05f + 3.0f * unit(random);
        float pdf;
        const auto value = [&](const Vector& from, const Vector& to) {
            return evalGTR(-from, to, alpha, i % 3, i % 3 ? gamma : 1.0f, n, frame, frame, pdf, 0) *
                   from.z;
        };
        const float there = value(view, light);
        EXPECT_NEAR(there, value(light, view), 1e-3f * (1e-3f + there)) << "type " << i % 3;
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
