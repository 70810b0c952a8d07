#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <random>

#include "pelk/shading_math/exponential_lobe.h"
#include "pelk/shading_math/gtr_lobe.h"
#include "pelk/shading_math/warped_lobe.h"

namespace Tarnkit {
namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;
// Tilted, so that spaces can't be mistaken for one another.
const Matrix kFrame{{{0.8f, 0, -0.6f}, {0, 1, 0}, {0.6f, 0, 0.8f}}};
const Matrix kLocal = transposed(kFrame);
const Vector kNormal = kFrame.columns[2];

/// What the density of a lobe is to the directions that it samples.
enum class Density {
    kOfMap,      ///< exactly that of the map from two numbers to the sphere
    kOfMixture,  ///< exactly that of two maps, above the surface
    kFit,        ///< the exponential lobe's approximation
};

/// A lobe in kFrame. `width`: what widens or narrows it.
struct Lobe {
    const char* what;
    Density density;
    std::function<Vector(float u, float v, float width, const Vector& d, float& pdf, float& weight)>
        sample;
    std::function<float(const Vector& direction, float width, const Vector& d)> pdf;
    /// None if the lobe is only sampled.
    std::function<float(const Vector& direction, float width, const Vector& d, float& pdf)> eval;
};

Lobe gtrLobe(const char* what, int type, float gamma, bool mixed = false) {
    return {what, mixed ? Density::kOfMixture : Density::kOfMap,
            [=](float u, float v, float alpha, const Vector& d, float& pdf, float& weight) {
                return mixed ? sampleGTRMixed(u, v, alpha, type, gamma, d, kFrame, pdf, weight, 0,
                                              kLocal)
                             : sampleGTR(u, v, alpha, type, gamma, d, kFrame, pdf, weight, 0);
            },
            [=](const Vector& r, float alpha, const Vector& d) {
                return (mixed ? gtrPdfMixed : gtrPdf)(r, alpha, type, gamma, kNormal, d);
            },
            [=](const Vector& r, float alpha, const Vector& d, float& pdf) {
                return (mixed ? evalGTRMixed : evalGTR)(d, r, alpha, type, gamma, kNormal, kFrame,
                                                        kLocal, pdf, 0);
            }};
}

const Lobe kGgx = gtrLobe("GGX", kGtrGgx, 2);

float evalExponential(const Vector& r, float k, const Vector& d, float& pdf) {
    pdf = exponentialPdf(r, k, kNormal, d, kLocal);
    return exponentialEval(r, k, kNormal, d, kLocal, kFrame);
}

const Lobe kExponential{"exponential", Density::kFit,
                        [](float u, float v, float k, const Vector& d, float& pdf, float& weight) {
                            const Vector r = sampleExponential(u, v, k, d, kFrame, pdf);
                            weight = exponentialEval(r, k, kNormal, d, kLocal, kFrame) / pdf;
                            return r;
                        },
                        [](const Vector& r, float k, const Vector& d) {
                            return exponentialPdf(r, k, kNormal, d, kLocal);
                        },
                        evalExponential};

const Lobe kWarped{"warped", Density::kOfMap,
                   [](float u, float v, float gloss, const Vector& d, float& pdf, float& weight) {
                       weight = 0;
                       return sampleWarpedLobe(u, v, gloss, d, kFrame, pdf, kLocal);
                   },
                   [](const Vector& r, float gloss, const Vector& d) {
                       return warpedLobePdf(r, gloss, d, kLocal);
                   },
                   nullptr};

class LobesTest : public testing::Test {
protected:
    static Vector direction(float z, float phi) {
        const float s = std::sqrt(1 - z * z);
        return kFrame * Vector(s * std::cos(phi), s * std::sin(phi), z);
    }
    float number(float from, float to) { return from + (to - from) * unit(random); }
    Vector above() { return direction(number(0.05f, 1), number(0, 6.2831853f)); }

    const Lobe lobes[6] = {kGgx,
                           gtrLobe("tail one", kGtrTailOne, 1),
                           gtrLobe("free tail", kGtrFreeTail, 1.6f),
                           gtrLobe("mixed", kGtrGgx, 2, true),
                           kExponential,
                           kWarped};
    std::mt19937 random{5};
    std::uniform_real_distribution<float> unit{0.0f, 1.0f};
    float pdf, weight;
};

TEST_F(LobesTest, DensityAndWeightOfSamplesAreTheEvaluated) {
    constexpr float kStep = 2e-3f;
    for (const Lobe& lobe : lobes) {
        for (int i = 0; i < 3000; ++i) {
            const float u = number(0.05f, 0.95f), v = unit(random), width = number(0.05f, 0.95f);
            const Vector d = -above(), r = lobe.sample(u, v, width, d, pdf, weight);
            SCOPED_TRACE(testing::Message() << lobe.what << " " << u << " " << v << " " << width);
            EXPECT_NEAR(length(r), 1.0f, 1e-5f);
            const Vector h = normalizeGuarded(r - d);
            if (!(pdf > 0 && pdf < 1e17f) || dot(h, r) < 0.1f)
                continue;  // seen at grazing angles, facets magnify rounding errors
            EXPECT_NEAR(lobe.pdf(r, width, d) / pdf, 1.0f, 2e-3f);
            if (lobe.eval && dot(r, kNormal) > 1e-3f) {
                float evalPdf;
                const float value = lobe.eval(r, width, d, evalPdf);
                EXPECT_NEAR(value, weight * pdf, 5e-3f * value);
                EXPECT_NEAR(evalPdf / pdf, 1.0f, 5e-3f);
            }
            if (lobe.density == Density::kOfMixture)
                continue;
            // 2 pi over the numeric derivative.
            const auto near = [&](float a, float b) {
                float unused;
                return lobe.sample(a, b, width, d, unused, unused);
            };
            const Vector alongU = near(u + kStep, v) - near(u - kStep, v);
            const Vector alongV = near(u, v + kStep) - near(u, v - kStep);
            const double area = length(cross(alongU, alongV)) / (4.0 * kStep * kStep);
            const float z = std::fabs(dot(h, kNormal)),
                        m = std::max(dot(r, kNormal), -dot(d, kNormal));
            const float fit = lobe.density == Density::kFit ? z * z * z * dot(h, r) / m : 1;
            EXPECT_NEAR(pdf * area / kTwoPi / fit, 1.0, 0.02);
        }
    }
}

TEST_F(LobesTest, DensityIntegratesToTheShareOfSamplesThatHaveIt) {
    constexpr int kSteps = 500;
    for (const Lobe& lobe : lobes) {
        if (lobe.density == Density::kFit)
            continue;
        const float lowest = lobe.density == Density::kOfMixture ? 0 : -1;
        for (float width : {0.3f, 0.8f}) {
            for (float cosine : {0.2f, 1.0f}) {
                const Vector d = -direction(cosine, 2.5f);
                double integral = 0, share = 0, weights = 0;
                for (int i = 0; i < kSteps * kSteps; ++i) {
                    const float u = (i / kSteps + 0.5f) / kSteps;
                    const float v = (i % kSteps + 0.5f) / kSteps;
                    const float phi = v * static_cast<float>(kTwoPi);
                    integral += lobe.pdf(direction(lowest + (1 - lowest) * u, phi), width, d);
                    const Vector r = lobe.sample(u, v, width, d, pdf, weight);
                    share += pdf > 0 && dot(r, kNormal) > lowest;
                    weights += weight;
                }
                SCOPED_TRACE(testing::Message() << lobe.what << " " << width << " " << cosine);
                EXPECT_NEAR(integral * (1 - lowest) / share, 1.0, 0.01);
                EXPECT_LE(weights / kSteps / kSteps, 1.005) << "more than the light that arrived";
            }
        }
    }
}

TEST_F(LobesTest, ValueTimesTheCosineOfTheViewIsSymmetric) {
    for (const Lobe& lobe : lobes) {
        for (int i = 0; lobe.eval && i < 3000; ++i) {
            const Vector view = above(), light = above();
            const float width = number(0.05f, 0.95f);
            const float there = lobe.eval(light, width, -view, pdf) * dot(kNormal, view);
            const float back = lobe.eval(view, width, -light, pdf) * dot(kNormal, light);
            EXPECT_NEAR(there, back, 1e-3f * (1e-3f + there)) << lobe.what;
        }
    }
}

TEST_F(LobesTest, GtrAnswersNothingWhereNothingIsSeen) {
    const Vector d = -kNormal, along = kFrame.columns[0];
    EXPECT_EQ(kGgx.sample(1.0f, 0.5f, 0.5f, d, pdf, weight), kNormal);
    EXPECT_EQ(weight, 0.0f) << "a facet that lies flat";
    weight = 9;
    kGgx.sample(0.3f, 0.5f, 0.5f, along, pdf, weight);
    EXPECT_EQ(weight, 0.0f) << "a view along the surface";
    EXPECT_EQ(kGgx.eval(along, 0.5f, d, pdf), 0.0f);
    EXPECT_EQ(pdf, 0.0f);
}

TEST_F(LobesTest, ExponentialValueIsTheDarkenedExactDensity) {
    for (float angle : {0.0f, 0.3f, 0.9f}) {  // seen along the normal, no groove shadows another
        const Vector r = direction(std::cos(angle), 1);
        const float z = std::cos(angle / 2);
        const float value = kExponential.eval(r, 0.25f, -kNormal, pdf);
        const float expected = (0.5f + 0.5f / 3) * pdf / (z * z * z * z);
        EXPECT_NEAR(value / expected, 1.0f, 1e-4f) << angle;
    }
    for (float k : {0.01f, 0.3f}) {
        // Squared slopes are distributed exponentially, so 1 - 1/e of them are below their mean.
        const Vector r = kExponential.sample(0.63212056f, 0.3f, k, -kNormal, pdf, weight);
        EXPECT_NEAR(std::tan(std::acos(dot(r, kNormal)) / 2), std::sqrt(k), 1e-4f);
    }
}

TEST_F(LobesTest, ExponentialIsDefinedAtItsEnds) {
    const Vector below = direction(-0.8f, 0), d = -direction(0.8f, 0),
                 mirror = mirrored(d, kNormal);
    EXPECT_LE(length(kExponential.sample(0.4f, 0.3f, 0, d, pdf, weight) - mirror), 1e-6f);
    EXPECT_EQ(pdf, 1e18f) << "a mirror";
    EXPECT_EQ(kExponential.eval(mirror, 0, d, pdf), 0.0f);
    EXPECT_EQ(pdf, 1e18f);
    EXPECT_LE(length(kExponential.sample(1.0f, 0.3f, 0.2f, d, pdf, weight) - mirror), 1e-6f)
        << "the logarithm of 0";
    const Vector along = kFrame.columns[0];
    EXPECT_EQ(kExponential.eval(below, 0.5f, d, pdf), 0.0f);
    EXPECT_EQ(kExponential.eval(mirror, 0.5f, -along, pdf), 0.0f) << "a view along the surface";
    EXPECT_EQ(kExponential.pdf(below, 0.5f, -below), 0.0f) << "both behind the surface";
    EXPECT_EQ(kExponential.pdf(-kNormal + along * 1e-4f, 0.5f, -kNormal), 0.0f)
        << "a facet that stands upright";
}

TEST_F(LobesTest, WarpedLeadsFromLambertToTheMirrorAndIsDefinedAtItsEnds) {
    const Vector d = -direction(0.6f, 2.5f), mirror = mirrored(d, kNormal);
    for (int i = 0; i < 200; ++i) {
        const float u = unit(random), v = unit(random);
        const Vector r = kWarped.sample(u, v, 0, d, pdf, weight);
        EXPECT_NEAR(dot(r, kNormal), std::sqrt(u), 1e-3f) << "diffuse: by the cosine";
        EXPECT_NEAR(pdf, 2 * std::sqrt(u), 5e-3f);
        EXPECT_LE(length(kWarped.sample(u, v, 1, d, pdf, weight) - mirror), 1e-5f);
        EXPECT_EQ(pdf, 1e18f);
        EXPECT_EQ(kWarped.pdf(r, 1, d), 0.0f) << "no light is met by chance";
    }
    EXPECT_EQ(kWarped.pdf(mirror, 1, d), 0.0f);
    for (float g : {0.0f, 0.5f, 1.0f}) {
        for (float cosine : {1.0f, 0.3f}) {
            for (float u : {0.0f, 1.0f}) {
                const Vector r = kWarped.sample(u, 0.25f, g, -direction(cosine, 2), pdf, weight);
                EXPECT_NEAR(length(r), 1.0f, 1e-5f);
                EXPECT_EQ(pdf > 0.0f, u > 0.0f) << "NaN, or light from the horizon";
            }
        }
    }
    // At high gloss no facet leans far enough to mirror the view to the horizon.
    EXPECT_EQ(kWarped.pdf(kFrame.columns[0], 0.9f, -kNormal), 0.0f);
}

}  // namespace
}  // namespace Tarnkit
