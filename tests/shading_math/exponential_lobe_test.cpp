#include "pelk/shading_math/exponential_lobe.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace Tarnkit {
namespace {

class ExponentialLobeTest : public testing::Test {
protected:
    ExponentialLobeTest() {  // tilted, so that spaces can't be mistaken for one another
        frame.columns[0] = {0.8f, 0, -0.6f};
        frame.columns[2] = n = {0.6f, 0, 0.8f};
        local = transposed(frame);
    }

    Vector above() {
        const float z = 0.02f + 0.98f * unit(random), s = std::sqrt(1 - z * z);
        const float phi = 6.2831853f * unit(random);
        return frame * Vector(s * std::cos(phi), s * std::sin(phi), z);
    }
    float pdfOf(const Vector& r, float k, const Vector& d) const {
        return exponentialPdf(r, k, n, d, local);
    }
    float eval(const Vector& r, float k, const Vector& d) const {
        return exponentialEval(r, k, n, d, local, frame);
    }

    Matrix frame, local;
    Vector n;
    std::mt19937 random{5};
    std::uniform_real_distribution<float> unit{0.0f, 1.0f};
};

TEST_F(ExponentialLobeTest, SampledAndEvaluatedDensitiesAgree) {
    for (int i = 0; i < 3000; ++i) {
        const float k = 0.01f + 0.9f * unit(random);
        const Vector d = -above();
        float pdf;
        const Vector r = sampleExponential(0.99f * unit(random), unit(random), k, d, frame, pdf);
        EXPECT_NEAR(pdfOf(r, k, d) / pdf, 1.0f, 2e-3f);
    }
}

TEST_F(ExponentialLobeTest, SlopesOfTheFacetsHaveTheMeanSquareK) {
    for (float k : {0.01f, 0.3f}) {
        double sum = 0;
        constexpr int kCount = 100000;
        for (int i = 0; i < kCount; ++i) {
            const Vector d = -n;
            float pdf;
            const Vector r = sampleExponential(unit(random), unit(random), k, d, frame, pdf);
            const float z = dot(n, normalizeGuarded(r - d));
            sum += 1 / (z * z) - 1;
        }
        EXPECT_NEAR(sum / kCount / k, 1.0, 0.02);
    }
}

TEST_F(ExponentialLobeTest, ValueTimesTheCosineOfTheViewIsSymmetric) {
    for (int i = 0; i < 3000; ++i) {
        const float k = 0.05f + 0.9f * unit(random);
        const Vector view = above(), light = above();
        const float there = eval(light, k, -view) * dot(n, view);
        const float back = eval(view, k, -light) * dot(n, light);
        EXPECT_NEAR(there, back, 1e-3f * (1e-3f + there));
    }
}

TEST_F(ExponentialLobeTest, NarrowLobeLosesNothingAndWideOnesAreDarkened) {
    // Along the normal the density is exact up to terms in k, so the mean weight is the albedo.
    constexpr float kWidth = 2e-4f;
    constexpr int kCount = 20000;
    double sum = 0;
    for (int i = 0; i < kCount; ++i) {
        float pdf;
        const Vector r = sampleExponential(unit(random), unit(random), kWidth, -n, frame, pdf);
        sum += eval(r, kWidth, -n) / pdf;
    }
    const double root = std::sqrt(kWidth);
    EXPECT_NEAR(sum / kCount, 1 - root + root / 3, 2e-3);
    // Seen along the normal, and where no groove shadows another, the value is the exact density
    // of the directions, which is the fit's over z^4, times the factor that darkens wide lobes.
    for (float angle : {0.0f, 0.3f, 0.9f}) {
        const Vector r = frame * Vector(std::sin(angle), 0, std::cos(angle));
        const float z = std::cos(angle / 2);
        const float expected = (0.5f + 0.5f / 3) * pdfOf(r, 0.25f, -n) / (z * z * z * z);
        EXPECT_NEAR(eval(r, 0.25f, -n) / expected, 1.0f, 1e-4f) << angle;
    }
}

TEST_F(ExponentialLobeTest, IsDefinedAtItsEnds) {
    const Vector d = frame * Vector(-0.6f, 0, -0.8f), mirror = mirrored(d, n);
    float pdf;
    EXPECT_LE(length(sampleExponential(0.4f, 0.3f, 0, d, frame, pdf) - mirror), 1e-6f);
    EXPECT_EQ(pdf, 1e18f) << "a mirror";
    EXPECT_EQ(pdfOf(mirror, 0, d), 1e18f);
    EXPECT_EQ(eval(mirror, 0, d), 0.0f);
    EXPECT_LE(length(sampleExponential(1.0f, 0.3f, 0.2f, d, frame, pdf) - mirror), 1e-6f)
        << "the logarithm of 0";
    const Vector below = frame * Vector(0.6f, 0, -0.8f), along = frame.columns[0];
    EXPECT_EQ(eval(below, 0.5f, d), 0.0f);
    EXPECT_EQ(eval(mirror, 0.5f, -along), 0.0f) << "a view along the surface";
    EXPECT_EQ(pdfOf(below, 0.5f, -below), 0.0f) << "both behind the surface";
    EXPECT_EQ(pdfOf(-n + along * 1e-4f, 0.5f, -n), 0.0f) << "a facet that stands upright";
}

}  // namespace
}  // namespace Tarnkit
