#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "fake_host/dice.h"
#include "pelk/shading_math/exponential_lobe.h"
#include "pelk/shading_math/gtr_lobe.h"
#include "pelk/shading_math/warped_lobe.h"

using namespace Tarnkit;

namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;
// Tilted, so that spaces can't be mistaken for one another.
const Matrix kFrame{{{0.8f, 0, -0.6f}, {0, 1, 0}, {0.6f, 0, 0.8f}}};
const Matrix kLocal = transposed(kFrame);
const Vector kNormal = kFrame.columns[2];

// The same, stretched along the surface to the area that it had.
const Matrix kStretched{{kFrame.columns[0] * 1.4f, kFrame.columns[1] * (1 / 1.4f), kNormal}};
const Matrix kStretchedLocal =
    transposed({{kFrame.columns[0] * (1 / 1.4f), kFrame.columns[1] * 1.4f, kNormal}});

/// The lobes; the first three are of the GtrType that has the same number. The mixed one and the
/// one in the stretched frame are of the second.
enum Lobe { kTailOne, kGgx, kFreeTail, kExponential, kWarped, kMixed, kWide };
constexpr Lobe kLobes[] = {kTailOne, kGgx, kFreeTail, kExponential, kWarped, kMixed};
constexpr float kGamma[] = {1, 2, 1.6f};

float eval(Lobe lobe, const Vector& r, float width, const Vector& d, float& pdf) {
    if (lobe == kMixed)
        return evalGTRMixed(d, r, width, kGtrGgx, 2, kNormal, kFrame, kLocal, pdf, 0);
    if (lobe == kWide)
        return evalGTR(d, r, width, kGtrGgx, 2, kNormal, kStretched, kStretchedLocal, pdf, 0);
    if (lobe == kExponential) {
        pdf = exponentialPdf(r, width, kNormal, d, kLocal);
        return exponentialEval(r, width, kNormal, d, kLocal, kFrame);
    }
    return evalGTR(d, r, width, lobe, kGamma[lobe], kNormal, kFrame, kLocal, pdf, 0);
}

float pdfOf(Lobe lobe, const Vector& r, float width, const Vector& d) {
    if (lobe == kExponential)
        return exponentialPdf(r, width, kNormal, d, kLocal);
    if (lobe == kWarped)
        return warpedLobePdf(r, width, d, kLocal);
    if (lobe == kMixed)
        return gtrPdfMixed(r, width, kGtrGgx, 2, kNormal, d);
    return gtrPdf(r, width, lobe, kGamma[lobe], kNormal, d);
}

Vector sample(Lobe lobe, float u, float v, float width, const Vector& d, float& pdf,
              float& weight) {
    if (lobe == kWarped)
        return sampleWarpedLobe(u, v, width, d, kFrame, pdf, kLocal);
    if (lobe == kMixed)
        return sampleGTRMixed(u, v, width, kGtrGgx, 2, d, kFrame, pdf, weight, 0, kLocal);
    if (lobe == kWide)
        return sampleGTR(u, v, width, kGtrGgx, 2, d, kStretched, pdf, weight, 0);
    if (lobe != kExponential)
        return sampleGTR(u, v, width, lobe, kGamma[lobe], d, kFrame, pdf, weight, 0);
    const Vector r = sampleExponential(u, v, width, d, kFrame, pdf);
    weight = exponentialEval(r, width, kNormal, d, kLocal, kFrame) / pdf;
    return r;
}

class LobesTest : public testing::Test, protected Dice {
protected:
    static Vector towards(float z, float phi) {
        const float s = std::sqrt(1 - z * z);
        return kFrame * Vector(s * std::cos(phi), s * std::sin(phi), z);
    }
    Vector above() { return towards(between(0.05f, 1), between(0, 6.2831853f)); }

    float pdf, weight = 0;
};

TEST_F(LobesTest, DensityAndWeightOfSamplesAreTheEvaluated) {
    constexpr float kStep = 2e-3f;
    for (int i = 0; i < 3000; ++i)
        for (const Lobe lobe : {kTailOne, kGgx, kFreeTail, kExponential, kWarped, kMixed, kWide}) {
            const float u = between(0.05f, 0.95f), v = between(0, 1), width = between(0.05f, 0.95f);
            const Vector d = -above(), r = sample(lobe, u, v, width, d, pdf, weight);
            SCOPED_TRACE(testing::Message() << lobe << " " << u << " " << v << " " << width);
            EXPECT_NEAR(length(r), 1.0f, 1e-5f);
            const Vector h = normalizeGuarded(r - d);
            if (!(pdf > 0 && pdf < 1e17f) || dot(h, r) < 0.1f)
                continue;  // seen at grazing angles, facets magnify rounding errors
            if (lobe != kWide) {
                EXPECT_NEAR(pdfOf(lobe, r, width, d) / pdf, 1.0f, 2e-3f);
            }
            if (lobe != kWarped && dot(r, kNormal) > 1e-3f) {
                float evalPdf;
                const float value = eval(lobe, r, width, d, evalPdf);
                EXPECT_NEAR(value, weight * pdf, 5e-3f * value);
                EXPECT_NEAR(evalPdf / pdf, 1.0f, 5e-3f);
                const float back = eval(lobe, -d, width, -r, evalPdf) * dot(r, kNormal);
                EXPECT_NEAR(-dot(d, kNormal) * value, back, 1e-3f * (1e-3f + back));
            }
            if (lobe == kMixed)
                continue;  // made of two
            // 2 pi over the numeric derivative, up to the fit of the exponential lobe's density.
            const auto near = [&](float a, float b) {
                float unused;
                return sample(lobe, a, b, width, d, unused, unused);
            };
            const Vector alongU = near(u + kStep, v) - near(u - kStep, v);
            const Vector alongV = near(u, v + kStep) - near(u, v - kStep);
            const double area = length(cross(alongU, alongV)) / (4.0 * kStep * kStep);
            const float z = std::fabs(dot(h, kNormal));
            const float m = std::max(dot(r, kNormal), -dot(d, kNormal));
            const float fit = lobe == kExponential ? z * z * z * dot(h, r) / m : 1;
            EXPECT_NEAR(pdf * area / kTwoPi / fit, 1.0, 0.02);
        }
}

TEST_F(LobesTest, DensityIntegratesToTheShareOfSamplesThatHaveIt) {
    constexpr int kSteps = 500;
    for (const Lobe lobe : kLobes) {
        if (lobe == kExponential)
            continue;
        for (float width : {0.3f, 0.8f}) {
            for (float cosine : {0.2f, 1.0f}) {
                const Vector d = -towards(cosine, 2.5f);
                double integral = 0, share = 0, weights = 0;
                weight = 0;  // for good where the lobe has none
                for (int i = 0; i < kSteps * kSteps; ++i) {
                    const float u = (i / kSteps + 0.5f) / kSteps;
                    const float v = (i % kSteps + 0.5f) / kSteps;
                    const float phi = v * static_cast<float>(kTwoPi);
                    const bool isAbove = u > 0.5f || lobe != kMixed;
                    integral += isAbove * pdfOf(lobe, towards(2 * u - 1, phi), width, d);
                    const Vector r = sample(lobe, u, v, width, d, pdf, weight);
                    share += lobe == kMixed ? dot(r, kNormal) > 0 : pdf > 0;
                    weights += weight;
                }
                SCOPED_TRACE(testing::Message() << lobe << " " << width << " " << cosine);
                EXPECT_NEAR(2 * integral / share, 1.0, 0.01);
                EXPECT_LE(weights / kSteps / kSteps, 1.005) << "more than the light that arrived";
            }
        }
    }
}

TEST_F(LobesTest, NothingIsSeenAlongOrBehindTheSurface) {
    const Vector d = -towards(0.8f, 0), mirror = mirrored(d, kNormal);
    const Vector along = kFrame.columns[0], below = towards(-0.8f, 0);
    for (const Lobe lobe : kLobes) {
        if (lobe == kWarped)
            continue;
        EXPECT_EQ(eval(lobe, along, 0.5f, -kNormal, pdf), 0.0f) << lobe;
        EXPECT_EQ(eval(lobe, below, 0.5f, d, pdf), 0.0f) << lobe;
        EXPECT_EQ(eval(lobe, mirror, 0.5f, -along, pdf), 0.0f) << lobe;
        weight = 9;
        sample(lobe, 0.6f, 0.5f, 0.5f, along, pdf, weight);
        EXPECT_EQ(weight, 0.0f) << lobe;
    }
    EXPECT_EQ(sample(kGgx, 1.0f, 0.5f, 0.5f, d, pdf, weight), kNormal);
    EXPECT_EQ(weight, 0.0f) << "a facet that lies flat";
    EXPECT_EQ(pdfOf(kExponential, -kNormal + along * 1e-4f, 0.5f, -kNormal), 0.0f)
        << "a facet that stands upright";
}

TEST_F(LobesTest, ExponentialValueIsTheDarkenedExactDensity) {
    for (float angle : {0.0f, 0.3f, 0.9f}) {  // seen along the normal, no groove shadows another
        const Vector r = towards(std::cos(angle), 1);
        const float z = std::cos(angle / 2);
        const float value = eval(kExponential, r, 0.25f, -kNormal, pdf);
        const float expected = (0.5f + 0.5f / 3) * pdf / (z * z * z * z);
        EXPECT_NEAR(value / expected, 1.0f, 1e-4f) << angle;
    }
}

TEST_F(LobesTest, LobesLeadToTheMirrorAndAreDefinedAtTheirEnds) {
    const Vector d = -towards(0.6f, 2.5f), mirror = mirrored(d, kNormal);
    for (int i = 0; i < 200; ++i) {
        const float u = between(0, 1), v = between(0, 1);
        const Vector r = sample(kWarped, u, v, 0, d, pdf, weight);
        EXPECT_NEAR(dot(r, kNormal), std::sqrt(u), 1e-3f) << "diffuse: by the cosine";
        EXPECT_NEAR(pdf, 2 * std::sqrt(u), 5e-3f);
        EXPECT_LE(length(sample(kWarped, u, v, 1, d, pdf, weight) - mirror), 1e-5f);
        EXPECT_EQ(pdf, 1e18f);
        EXPECT_EQ(pdfOf(kWarped, r, 1, d), 0.0f) << "no light is met by chance";
    }
    EXPECT_EQ(pdfOf(kWarped, mirror, 1, d), 0.0f);
    for (float u : {0.0f, 1.0f}) {
        EXPECT_NEAR(length(sample(kWarped, u, 0.25f, 0.5f, d, pdf, weight)), 1.0f, 1e-5f);
        EXPECT_EQ(pdf > 0.0f, u > 0.0f) << "NaN, or light from the horizon";
    }
    EXPECT_LE(length(sample(kExponential, 0.4f, 0.3f, 0, d, pdf, weight) - mirror), 1e-6f);
    EXPECT_EQ(pdf, 1e18f);
    EXPECT_LE(length(sample(kExponential, 1.0f, 0.3f, 0.2f, d, pdf, weight) - mirror), 1e-6f)
        << "the logarithm of 0";
    // At high gloss no facet leans far enough to mirror the view to the horizon.
    EXPECT_EQ(pdfOf(kWarped, kFrame.columns[0], 0.9f, -kNormal), 0.0f);
}

}  // namespace
