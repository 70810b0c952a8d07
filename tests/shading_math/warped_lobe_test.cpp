#include "pelk/shading_math/warped_lobe.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace Tarnkit {
namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;

class WarpedLobeTest : public testing::Test {
protected:
    WarpedLobeTest() {  // tilted, so that spaces can't be mistaken for one another
        frame.columns[0] = {0.8f, 0, -0.6f};
        frame.columns[2] = {0.6f, 0, 0.8f};
        local = transposed(frame);
    }

    Vector view(float cosine) const {
        return frame * Vector{0.8f * -std::sqrt(1 - cosine * cosine),
                              0.6f * std::sqrt(1 - cosine * cosine), -cosine};
    }
    Vector sample(float u, float v, float g, const Vector& d, float& pdf) const {
        return sampleWarpedLobe(u, v, g, d, frame, pdf, local);
    }

    Matrix frame, local;
    std::mt19937 random{5};
    std::uniform_real_distribution<float> unit{0.0f, 1.0f};
};

TEST_F(WarpedLobeTest, DensityIsTheInverseOfTheNumericDerivative) {
    constexpr float kStep = 2e-3f;
    for (int i = 0; i < 2000; ++i) {
        const float u = 0.05f + 0.9f * unit(random), v = unit(random), g = 0.95f * unit(random);
        const Vector d = view(0.1f + 0.9f * unit(random));
        float pdf, unused;
        const Vector r = sample(u, v, g, d, pdf);
        EXPECT_NEAR(length(r), 1.0f, 1e-5f);
        const Vector alongU =
            sample(u + kStep, v, g, d, unused) - sample(u - kStep, v, g, d, unused);
        const Vector alongV =
            sample(u, v + kStep, g, d, unused) - sample(u, v - kStep, g, d, unused);
        const double area = length(cross(alongU, alongV)) / (4.0 * kStep * kStep);
        EXPECT_NEAR(pdf * area / kTwoPi, 1.0, 0.02) << u << " " << v << " " << g;
        EXPECT_NEAR(warpedLobePdf(r, g, d, local) / pdf, 1.0, 5e-3) << u << " " << v << " " << g;
    }
}

TEST_F(WarpedLobeTest, DensityIntegratesToTwoPi) {
    constexpr int kSteps = 500;
    for (float g : {0.0f, 0.3f, 0.8f}) {
        for (float cosine : {0.2f, 1.0f}) {
            const Vector d = view(cosine);
            double sum = 0;
            for (int i = 0; i < kSteps; ++i) {
                const float z = (2 * i + 1.0f) / kSteps - 1, s = std::sqrt(1 - z * z);
                for (int k = 0; k < kSteps; ++k) {
                    const double phi = (k + 0.5) * kTwoPi / kSteps;
                    const Vector even(s * static_cast<float>(std::cos(phi)),
                                      s * static_cast<float>(std::sin(phi)), z);
                    sum += warpedLobePdf(frame * even, g, d, local);
                }
            }
            EXPECT_NEAR(sum * 2 / kSteps / kSteps, 1.0, 0.01) << g << " " << cosine;
        }
    }
}

TEST_F(WarpedLobeTest, GlossLeadsFromLambertToTheMirror) {
    const Vector d = view(0.6f), n = frame.columns[2];
    for (int i = 0; i < 200; ++i) {
        const float u = unit(random), v = unit(random);
        float pdf;
        const Vector r = sample(u, v, 0.0f, d, pdf);
        EXPECT_NEAR(dot(r, n), std::sqrt(u), 1e-3f) << "diffuse: by the cosine";
        EXPECT_NEAR(pdf, 2 * std::sqrt(u), 5e-3f);
        const Vector mirror = sample(u, v, 1.0f, d, pdf);
        EXPECT_LE(length(mirror - mirrored(d, n)), 1e-5f);
        EXPECT_EQ(pdf, 1e18f);
        EXPECT_EQ(warpedLobePdf(r, 1.0f, d, local), 0.0f) << "no light is met by chance";
    }
    EXPECT_EQ(warpedLobePdf(mirrored(d, n), 1.0f, d, local), 0.0f);
}

TEST_F(WarpedLobeTest, IsDefinedAtHorizonAndPole) {
    for (float g : {0.0f, 0.5f, 1.0f}) {
        for (float cosine : {1.0f, 0.3f}) {
            for (float u : {0.0f, 1.0f}) {
                float pdf;
                const Vector r = sample(u, 0.25f, g, view(cosine), pdf);
                EXPECT_NEAR(length(r), 1.0f, 1e-5f);
                EXPECT_EQ(pdf > 0.0f, u > 0.0f) << "NaN, or light from the horizon";
            }
        }
    }
    // At high gloss no facet leans far enough to mirror the view to the horizon.
    EXPECT_EQ(warpedLobePdf(frame.columns[0], 0.9f, -frame.columns[2], local), 0.0f);
}

}  // namespace
}  // namespace Tarnkit
