#include "pelk/shading_math/warped_lobe.h"

#include <algorithm>
#include <cmath>

#include "pelk/base/limits.h"

namespace Tarnkit {
namespace {

constexpr float kTwoPi = 6.2831855f;

Vector halfVector(const Vector& w, const Vector& local) {
    const Vector sum = w - local;
    return sum * (1.0f / length(sum));
}

/// The facet with the azimuth of `from` at the polar cosine z. Where `from` is the normal it has no
/// azimuth, and the facet is the normal too.
Vector atPolarCosine(const Vector& from, float z) {
    const float radius = std::sqrt(from.x * from.x + from.y * from.y);
    if (radius == 0.0f)
        return {0.0f, 0.0f, z};
    const float sine = std::sqrt(std::max(0.0f, 1.0f - z * z));
    return {sine * from.x / radius, sine * from.y / radius, z};
}

/// A facet H and the facet to which it is squeezed.
struct Squeeze {
    Vector from, to;
    float k;  ///< 1 - g, by which the distance of the cosine from 1 shrinks

    /// The derivative of `to`, `change` being that of `from`. With z' = 1 - k (1 - z) the ratio of
    /// the two sines is sqrt(k (1 + z') / (1 + z)): in this form the azimuth needs no division by
    /// a sine that is 0 at the normal.
    Vector derivative(const Vector& change) const {
        const float above = 1.0f + from.z, aboveTo = 1.0f + to.z;
        const float ratio = std::sqrt(k * aboveTo / above);
        const float slope = 0.5f * ratio * (k / aboveTo - 1.0f / above) * change.z;
        return {ratio * change.x + slope * from.x, ratio * change.y + slope * from.y, k * change.z};
    }
};

/// The derivative of mirroring `d` at the facet m, which changes by `change`.
Vector mirroredDerivative(const Vector& d, const Vector& m, const Vector& change) {
    const Vector twice = d * 2.0f;
    return -(change * dot(m, twice) + m * dot(change, twice));
}

/// 2 pi over |dr/du x dr/dv| for the direction r to which w leads. `local`: the view in local
/// space; `d` and `frame` say in which space r is. The derivatives of w along u and along v have no
/// bound at its horizon and at its pole, but the area between them is pi / w.z everywhere. So they
/// are taken along two unit tangents of the sphere of w, and that area is put in as a factor.
float density(const Vector& w, const Vector& local, const Squeeze& facet, const Vector& d,
              const Matrix& frame) {
    const float sine = std::sqrt(w.x * w.x + w.y * w.y), reciprocal = 1.0f / length(w - local);
    const Vector across = sine > 0.0f ? Vector(-w.y / sine, w.x / sine, 0.0f) : Vector(0, 1, 0);
    const Vector tangents[2] = {cross(across, w), across};
    Vector derivatives[2];
    const Vector m = frame * facet.to;
    for (int i = 0; i < 2; ++i) {
        const Vector& t = tangents[i];
        const Vector half = (t - facet.from * dot(facet.from, t)) * reciprocal;
        derivatives[i] = mirroredDerivative(d, m, frame * facet.derivative(half));
    }
    // As a quotient of the two only in the end: at g = 1 the area is 0, and that is a mirror.
    const float area = length(cross(derivatives[0], derivatives[1])), cosine = 2.0f * w.z;
    return cosine < area * kDeltaDensity ? cosine / area : kDeltaDensity;
}

}  // namespace

Vector sampleWarpedLobe(float u, float v, float g, const Vector& d, const Matrix& frame, float& pdf,
                        const Matrix& toLocal) {
    const Vector local = toLocal * d;
    const float phi = v * kTwoPi, sine = std::sqrt(1.0f - u);
    const Vector w{std::cos(phi) * sine, std::sin(phi) * sine, std::sqrt(u)};
    const Vector from = halfVector(w, local);
    const float z = std::min(from.z * (1.0f - g) + 1.0f - (1.0f - g), 1.0f);
    const Squeeze facet{from, atPolarCosine(from, z), 1.0f - g};
    pdf = w.z > 0.0f ? density(w, local, facet, d, frame) : 0.0f;
    return mirrored(d, frame * facet.to);
}

float warpedLobePdf(const Vector& direction, float g, const Vector& d, const Matrix& toLocal) {
    const Vector local = toLocal * d, to = halfVector(toLocal * direction, local);
    const float k = 1.0f - g;
    // 1 - z' by the sine, as the cosine has lost its digits where narrow lobes stand.
    const float z = 1.0f - (to.x * to.x + to.y * to.y) / ((1.0f + to.z) * k);
    if (!(z >= 0.0f && z <= 1.0f))
        return 0.0f;
    const Squeeze facet{atPolarCosine(to, z), to, k};
    const Vector w = mirrored(local, facet.from);
    if (!(w.z > 0.0f))
        return 0.0f;
    return density(w, local, facet, local, Matrix());
}

}  // namespace Tarnkit
