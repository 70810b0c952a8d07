#include "pelk/shading_math/exponential_lobe.h"

#include <algorithm>
#include <cmath>

#include "pelk/base/limits.h"

namespace Tarnkit {
namespace {

constexpr float kTwoPi = 6.2831855f;
/// Cosines and widths below this count as 0: what is divided by them would overflow.
constexpr float kLeast = 1e-6f;

}  // namespace

Vector sampleExponential(float u, float v, float k, const Vector& d, const Matrix& frame,
                         float& pdf) {
    const float phi = v * kTwoPi, w = u >= 1.0f ? u - 1.0f : u;
    const float t = std::max(0.0f, -std::log(1.0f - w));
    const float c = std::sqrt(1.0f / (t * k + 1.0f)), s = std::sqrt(std::max(0.0f, 1.0f - c * c));
    const Vector h = normalizeGuarded(frame * Vector(std::cos(phi) * s, std::sin(phi) * s, c));
    const Vector r = mirrored(d, h), n = frame.columns[2];
    const float m = std::max(-dot(d, n), dot(r, n)) * k;
    pdf = m >= kLeast ? (1.0f - w) / (2.0f * m) : kDeltaDensity;
    return r;
}

float exponentialPdf(const Vector& direction, float k, const Vector& n, const Vector& d,
                     const Matrix& toLocal) {
    if (std::fabs(k) < kLeast)
        return kDeltaDensity;
    const float m = std::max(dot(direction, n), -dot(n, d));
    if (m < kLeast)
        return 0.0f;
    // Without normalising: the quotient of z^2 and q is all that is asked of the half vector.
    const Vector sum = toLocal * (direction - d);
    const float z2 = sum.z * sum.z, q = dot(sum, sum);
    if (z2 < kLeast * q)
        return 0.0f;
    return std::exp((z2 - q) / (z2 * k)) / (2.0f * m * k);
}

float exponentialEval(const Vector& direction, float k, const Vector& n, const Vector& d,
                      const Matrix& toLocal, const Matrix& toWorld) {
    const Vector h = normalizeGuarded(toLocal * (direction - d));
    const float z = h.z, a = dot(n, -d), b = dot(n, direction);
    const float m = dot(toWorld * h, -d);
    if (!(m >= kLeast && z >= kLeast && a >= kLeast && k > 0.0f))
        return 0.0f;
    // A quarter of the 2 pi of the value and of the pi of D is left: a half, taken into G here.
    const float g = std::min({0.5f, z * a / m, z * b / m});
    if (!(g > 0.0f))
        return 0.0f;
    const float z2 = z * z, root = std::sqrt(k);
    const float density = std::exp(-(1.0f / z2 - 1.0f) / k) / (z2 * z2 * k);
    return ((1.0f - root) + root * 0.33333334f) * density * g / a;
}

}  // namespace Tarnkit
