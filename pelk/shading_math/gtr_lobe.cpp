#include "pelk/shading_math/gtr_lobe.h"

#include <algorithm>
#include <cmath>

#include "pelk/base/limits.h"

namespace Tarnkit {
namespace {

constexpr float kPi = 3.14159265f;
constexpr float kTwoPi = 6.2831855f;
/// Facets of at most this cosine to the normal count as hidden: the tangent
/// grows without bound there, and the formulas lose their last digits.
constexpr float kLeastCosine = 0.001f;

/// Samples the squared polar cosine of a facet by D(c) c: the inverse of its cumulative
/// distribution. `u`: at least 0, below 1. Burley, appendix B.2; for GGX Walter, eq. 35.
float sampleCosine2(float u, float a2, int type, float gamma) {
    switch (type) {
        case kGtrTailOne:
            return (1.0f - std::pow(a2, 1.0f - u)) / (1.0f - a2);
        case kGtrFreeTail: {
            const float power = std::pow(a2, 1.0f - gamma) * (1.0f - u) + u;
            return (1.0f - std::pow(power, 1.0f / (1.0f - gamma))) / (1.0f - a2);
        }
        default:
            return (1.0f - u) / ((a2 - 1.0f) * u + 1.0f);
    }
}

/// D(c), the distribution of facet normals per solid angle, by their polar cosine. `p` is the
/// 1 + (a2 - 1) c^2 of the formula, in an order of operations that results depend on. 0 where the
/// division would be by next to nothing.
float distribution(float c, float a2, int type, float gamma) {
    if (!(c > kLeastCosine))
        return 0.0f;
    const float c2 = c * c;
    const float p = c2 * (1.0f / c2 - 1.0f + a2);
    switch (type) {
        case kGtrTailOne: {
            const float below = std::log(a2) * kPi * p;
            return below < (a2 - 1.0f) * 1e-6f ? (a2 - 1.0f) / below : 0.0f;
        }
        case kGtrFreeTail: {
            const float above = (gamma - 1.0f) * (a2 - 1.0f);
            const float below = (1.0f - std::pow(a2, 1.0f - gamma)) * kPi * std::pow(p, gamma);
            return std::fabs(below) > 1e-6f * std::fabs(above) ? above / below : 0.0f;
        }
        default: {
            const float below = kPi * (p * p);
            return below > a2 * 1e-6f ? a2 / below : 0.0f;
        }
    }
}

/// G / (4 n . v), the masking part of f |n . l|; `nv`: |n . v|. Times D it is f |n . l|, divided by
/// the c / (4 h . l) of the density it is the weight of a sample.
float maskBoth(const Vector& d, const Vector& r, const Vector& h, const Vector& n, float alpha,
               float gamma, int maskMode, float nv) {
    return gtrMasking(-d, h, n, alpha, gamma, maskMode) *
           gtrMasking(r, h, n, alpha, gamma, maskMode) * 0.25f / nv;
}

Vector over(const Vector& v, float s) {
    return {v.x / s, v.y / s, v.z / s};
}

/// Whether a direction's cosine to the normal is too small to divide by. NaN counts as too small.
bool grazes(float cosine) {
    return !(std::fabs(cosine) > 1e-6f);
}

}  // namespace

Vector sampleGTR(float u, float v, float alpha, int type, float gamma, const Vector& d,
                 const Matrix& frame, float& pdf, float& weight, int maskMode) {
    const float a2 = alpha * alpha, phi = v * kTwoPi;
    const Vector n = frame.columns[2];
    const float c2 = sampleCosine2(u, a2, type, gamma), c = std::sqrt(c2);
    pdf = weight = 0.0f;
    if (!(c > 0.0f))
        return n;
    const float s = std::sqrt(std::max(0.0f, 1.0f - c2));
    const Vector facet = frame * Vector(std::cos(phi) * s, std::sin(phi) * s, c);
    const float f = length(facet);
    const Vector h = over(facet, f);
    const Vector r = mirrored(d, h);
    const float nv = std::fabs(dot(n, -d));
    if (grazes(nv) || grazes(dot(n, r))) {
        pdf = kDeltaDensity;
        return r;
    }
    const float density = distribution(c, a2, type, gamma);
    const float both = maskBoth(d, r, h, n, alpha, gamma, maskMode, nv);
    const float hr = dot(h, r);
    // From facets to directions: the Jacobian 1 / (4 h . l) of mirroring, and the cube of the
    // length for that of a stretched frame.
    const float j = (hr > 0.0f ? 0.25f / hr * c : 0.0f) * f * (f * f);
    pdf = density >= 1e-6f ? density * j * kTwoPi : kDeltaDensity;
    weight = j >= 1e-6f ? both / j : 0.0f;
    return r;
}

float gtrPdf(const Vector& direction, float alpha, int type, float gamma, const Vector& n,
             const Vector& d) {
    const Vector sum = direction - d;
    const Vector h = sum * (1.0f / length(sum));
    const float c = dot(n, h), b = dot(h, direction);
    if (!(c > 0.0f && b > 0.0f))
        return 0.0f;
    return 0.25f / b * distribution(c, alpha * alpha, type, gamma) * c * kTwoPi;
}

float evalGTR(const Vector& d, const Vector& direction, float alpha, int type, float gamma,
              const Vector& n, const Matrix& toWorld, const Matrix& toLocal, float& pdf,
              int maskMode) {
    pdf = 0.0f;
    const float nv = std::fabs(dot(n, -d));
    if (grazes(nv) || grazes(dot(n, direction)))
        return 0.0f;
    const Vector h = normalizeGuarded(direction - d);
    const Vector local = normalizeGuarded(toLocal * h);
    const float c = local.z;
    const float density = distribution(c, alpha * alpha, type, gamma);
    const float both = maskBoth(d, direction, h, n, alpha, gamma, maskMode, nv);
    const float hr = dot(h, direction);
    const float j = hr > 0.0f && c > 0.0f ? 0.25f / hr * c : 0.0f;
    const Vector world = toWorld * local;
    const float q = dot(world, world);
    pdf = j * density * kTwoPi * q * std::sqrt(q);
    return density * both * kTwoPi;
}

float evalGTRMixed(const Vector& d, const Vector& direction, float alpha, int type, float gamma,
                   const Vector& n, const Matrix& toWorld, const Matrix& toLocal, float& pdf,
                   int maskMode) {
    const float value =
        evalGTR(d, direction, alpha, type, gamma, n, toWorld, toLocal, pdf, maskMode);
    pdf = alpha + (1.0f - alpha) * pdf;
    return value;
}

float gtrPdfMixed(const Vector& direction, float alpha, int type, float gamma, const Vector& n,
                  const Vector& d) {
    return gtrPdf(direction, alpha, type, gamma, n, d) * (1.0f - alpha) + alpha;
}

Vector sampleGTRMixed(float u, float v, float alpha, int type, float gamma, const Vector& d,
                      const Matrix& frame, float& pdf, float& weight, int maskMode,
                      const Matrix& toLocal) {
    Vector direction;
    float value, old;
    if (u < alpha) {
        // Uniform over the hemisphere: the cosine is. In the unit of `pdf` its density is 1.
        const float w = u / alpha, s = std::sqrt(1.0f - w * w), phi = v * kTwoPi;
        const Vector* c = frame.columns;
        direction = over(c[0], length(c[0])) * std::cos(phi) * s +
                    over(c[1], length(c[1])) * std::sin(phi) * s + c[2] * w;
        value = evalGTR(d, direction, alpha, type, gamma, c[2], frame, toLocal, pdf, maskMode);
        old = 1.0f;
    } else {
        direction = sampleGTR((u - alpha) / (1.0f - alpha), v, alpha, type, gamma, d, frame, pdf,
                              value, maskMode);
        old = pdf;
    }
    pdf = alpha + (1.0f - alpha) * pdf;
    weight = pdf > 1e-6f ? value * old / pdf : 0.0f;
    return direction;
}

}  // namespace Tarnkit
