#include "pelk/host/plugins/facet_lobe.h"

#include <algorithm>
#include <cmath>

#include "pelk/contract/renderer.h"
#include "pelk/shading_math/gtr_lobe.h"

namespace Tarnkit {

float fresnelShare(float cosine, float n) {
    const float sine2 = (1.0f - cosine * cosine) / (n * n);
    if (!(sine2 < 1.0f))
        return 1.0f;
    const float refracted = std::sqrt(1.0f - sine2);
    const float across = (cosine - n * refracted) / (cosine + n * refracted);
    const float along = (n * cosine - refracted) / (n * cosine + refracted);
    return 0.5f * (across * across + along * along);
}

bool tracesMirrorRays(const PelkContext& context) {
    const SequenceData& settings = context.renderer->sequenceData;
    return settings.reflectionsEnabled && (settings.reflectiveGi || !(context.rayType & kRayGi));
}

FacetShape FacetShape::of(float roughness, float tail) {
    FacetShape shape;
    roughness = std::clamp(std::isnan(roughness) ? 0.0f : roughness, 0.0f, 1.0f);
    shape.alpha = roughness < 0.04f ? 0.0f : roughness * roughness;
    shape.tail = std::clamp(std::isnan(tail) ? 2.0f : tail, 0.0f, 10.0f);
    if (shape.tail == 2.0f) {
        shape.type = kGtrGgx;
        return shape;
    }
    // The GTR formulas divide by 1 - alpha^2 for a tail other than 2, and by 1 - tail.
    shape.alpha = std::min(shape.alpha, 0.999f);
    shape.type = std::fabs(shape.tail - 1.0f) <= 0.01f ? kGtrTailOne : kGtrFreeTail;
    return shape;
}

float FacetShape::albedo(float cosine) const {
    constexpr u32 kSamples = 1024;
    if (isSmooth())
        return 1.0f;
    const Vector view{-std::sqrt(1.0f - cosine * cosine), 0.0f, -cosine};
    const Matrix frame;
    float sum = 0.0f;
    for (u32 i = 0; i < kSamples; ++i) {
        const Random2 random = random2(0, i, RandomUse::Facet);
        float pdf, weight;
        sampleGTR(random.x, random.y, alpha, type, tail, view, frame, pdf, weight, 0);
        sum += weight;
    }
    return sum / static_cast<float>(kSamples);
}

void FacetLobe::place(const FacetShape& shape_, const PelkContext& context) {
    shape = shape_;
    view = context.rayDir;
    Vector n = context.normal;
    // A shading normal that faces away from the viewer would give the lobe a view from below.
    if ((dot(n, view) < 0.0f) == (context.backSide != 0))
        n = context.geomNormal;
    Matrix& m = toWorld;
    m.columns[2] = context.backSide ? -n : n;
    makeBasis(m.columns[2], m.columns[0], m.columns[1]);
    toLocal = transposed(m);
}

float FacetLobe::eval(const Vector& direction, float& pdf) const {
    pdf = 0.0f;
    if (shape.isSmooth())
        return 0.0f;
    return 0.5f * evalGTR(view, direction, shape.alpha, shape.type, shape.tail, normal(), toWorld,
                          toLocal, pdf, 0);
}

FacetSample FacetLobe::sample(Random2 random) const {
    FacetSample s;
    if (shape.isSmooth()) {
        s.facet = normal();
        s.direction = mirrored(view, s.facet);
        s.pdf = s.weight = 1.0f;
        return s;
    }
    s.direction = sampleGTR(random.x, random.y, shape.alpha, shape.type, shape.tail, view, toWorld,
                            s.pdf, s.weight, 0);
    s.facet = facetFor(s.direction);
    return s;
}

float FacetLobe::refractedWeight(const Vector& facet, const Vector& direction) const {
    if (shape.isSmooth())
        return 1.0f;
    const Vector& n = normal();
    const float product = viewCosine() * dot(n, facet);
    if (!(product > 1e-6f))
        return 0.0f;
    // Smith masking is the same below the surface, for the opposite direction.
    return gtrMasking(-view, facet, n, shape.alpha, shape.tail, 0) *
           gtrMasking(-direction, facet, n, shape.alpha, shape.tail, 0) * -dot(view, facet) /
           product;
}

}  // namespace Tarnkit
