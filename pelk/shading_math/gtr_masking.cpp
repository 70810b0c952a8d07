#include "pelk/shading_math/gtr_masking.h"

#include <algorithm>
#include <cmath>

namespace Tarnkit {
namespace {

/// Directions of at most this cosine to the normal count as along the surface: the tangent
/// grows without bound there, and the formulas lose their last digits.
constexpr float kLeastCosine = 0.001f;
/// A tail within this of one with a closed form takes that form.
constexpr float kTailTolerance = 0.01f;

// Smith's masking G1 for each tail with a closed form. `a`: cotangent of the direction's angle to
// the normal; `a2`: alpha squared.

/// D is 1 / pi whatever the roughness, which is GGX of the roughness 1.
float maskTailZero(float a) {
    return 2.0f / (std::sqrt(1.0f / (a * a) + 1.0f) + 1.0f);
}

float maskTailOne(float a, float a2) {
    // At alpha = 1 the distribution is 1 / pi whatever the tail; the form would divide 0 by 0.
    if (a2 == 1.0f)
        return maskTailZero(a);
    const float squares = a * a + a2, root = std::sqrt(squares), one = std::sqrt(a * a + 1.0f);
    const float g = a * std::log(a2) / (root - one + a * std::log((a + one) * a2 / (a + root)));
    return std::isnan(g) ? 1.0f : g;  // alpha = 0, a mirror: nothing is masked
}

/// GGX: Walter et al., EGSR 2007, eq. 34, with alpha / a for alpha times the tangent.
float maskTailTwo(float a, float alpha) {
    const float ratio = alpha / a;
    return 2.0f / (std::sqrt(ratio * ratio + 1.0f) + 1.0f);
}

float maskTailThree(float a, float a2) {
    const float root = std::sqrt(a * a + a2);
    return 4.0f * a * (a2 + 1.0f) * root /
           (a2 * (3.0f * a2 + 1.0f) + 2.0f * a * (a2 + 1.0f) * (a + root));
}

float maskTailFour(float a, float a2) {
    const float a4 = a2 * a2, s = a2 + 1.0f + a4;
    const float squares = a2 + a * a, q = squares * std::sqrt(squares);
    return 2.0f * a * (8.0f * s) * q /
           (3.0f * a2 * (4.0f * (a * a) * (s + a4) + a2 * (2.0f * a2 + 1.0f + 5.0f * a4)) +
            8.0f * s * a * (a * (a * a) + q));
}

constexpr int kKnots = 5;

/// The natural cubic spline through y at the places 0, 1, 2, 3, 4; beyond them the values at the
/// ends.
float readSpline(const float (&y)[kKnots], float x) {
    x = std::clamp(x, 0.0f, static_cast<float>(kKnots - 1));
    // The second derivatives at the knots, 0 at both ends, from a tridiagonal system: elimination
    // downwards here, substitution upwards below.
    float second[kKnots] = {}, right[kKnots] = {};
    for (int i = 1; i < kKnots - 1; ++i) {
        const float below = 0.5f * second[i - 1] + 2.0f;
        second[i] = -0.5f / below;
        right[i] = (3.0f * (y[i + 1] - 2.0f * y[i] + y[i - 1]) - 0.5f * right[i - 1]) / below;
    }
    second[kKnots - 1] = 0.0f;
    for (int i = kKnots - 2; i >= 0; --i)
        second[i] = second[i] * second[i + 1] + right[i];
    int low = 0, high = kKnots - 1;
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        (static_cast<float>(middle) > x ? high : low) = middle;
    }
    const float b = x - static_cast<float>(low), a = 1.0f - b;
    return a * y[low] + b * y[high] +
           ((a * a * a - a) * second[low] + (b * b * b - b) * second[high]) / 6.0f;
}

/// G1 of the tail `gamma`: a closed form, or the spline through all of them.
float maskAnyTail(float a, float alpha, float gamma) {
    const float a2 = alpha * alpha;
    if (gamma <= kTailTolerance)
        return maskTailZero(a);
    if (std::fabs(gamma - 1.0f) <= kTailTolerance)
        return maskTailOne(a, a2);
    if (std::fabs(gamma - 3.0f) <= kTailTolerance)
        return maskTailThree(a, a2);
    if (gamma >= 3.99f)
        return maskTailFour(a, a2);
    const float knots[kKnots] = {maskTailZero(a), maskTailOne(a, a2), maskTailTwo(a, alpha),
                                 maskTailThree(a, a2), maskTailFour(a, a2)};
    return readSpline(knots, gamma);
}

}  // namespace

float gtrMasking(const Vector& w, const Vector& h, const Vector& n, float alpha, float gamma,
                 int maskMode) {
    const float c = dot(n, w);
    if (!(c > kLeastCosine) || !(dot(h, w) * c > 0.0f))
        return 0.0f;
    if (c >= 0.999999f)
        return 1.0f;
    const float a = c / std::sqrt(1.0f - c * c);
    const float g = maskMode || std::fabs(gamma - 2.0f) <= kTailTolerance
                        ? maskTailTwo(a, alpha)
                        : maskAnyTail(a, alpha, gamma);
    return g > 0.0f ? std::min(g, 1.0f) : 0.0f;
}

}  // namespace Tarnkit
