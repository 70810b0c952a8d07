#include "pelk/shading_math/refraction.h"

#include <cmath>

namespace Tarnkit {

Refraction refract(const Vector& d, const Vector& m, float n, const Vector& dx, const Vector& dy) {
    // From here on `normal` is on the ray's side; the names are those of the header's formulas.
    const bool leaves = dot(m, d) >= 0.0f;
    const Vector normal = leaves ? -m : m;
    const float eta = leaves ? n : 1.0f / n;
    const float c = -dot(d, normal), cx = -dot(dx, normal), cy = -dot(dy, normal);
    const float q = 1.0f - (1.0f - c * c) * (eta * eta);
    if (q > 1e-6f) {
        const float s = std::sqrt(q);
        return {d * eta + normal * (eta * c - s),
                dx * eta + normal * (eta * cx - cx * c * (eta * eta) / s),
                dy * eta + normal * (eta * cy - cy * c * (eta * eta) / s), false};
    }
    // Total internal reflection. r - d lies along the normal. For a ray along the surface it is the
    // zero vector, and the derivatives stay as they are, as such a ray isn't turned.
    const Vector r = mirrored(d, normal);
    const Vector h = normalizeGuarded(r - d);
    return {r, mirrored(dx, h), mirrored(dy, h), true};
}

float fresnelDielectric(const Vector& d, const Vector& m, const Vector& t, float n) {
    if (std::fabs(n - 1.0f) < 1e-6f)
        return 0.0f;
    const float a = -dot(d, m), b = -dot(t, m);
    if (a > 1.0f || b > 1.0f) {
        const float head = (n - 1.0f) / (n + 1.0f);
        return head * head;
    }
    // The limit for a ray along the surface, where p would become infinity over infinity.
    if (std::fabs(a) < 1e-30f)
        return 1.0f;
    const float p = (b / a) * n, q = (a / b) * n;
    const float parallel = (p - 1.0f) / (p + 1.0f), perpendicular = (q - 1.0f) / (q + 1.0f);
    return (parallel * parallel + perpendicular * perpendicular) * 0.5f;
}

}  // namespace Tarnkit
