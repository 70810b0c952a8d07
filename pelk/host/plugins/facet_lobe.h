#pragma once

#include "pelk/contract/context.h"
#include "pelk/host/trace/sampling.h"
#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

/// Share of light that a smooth surface mirrors between two clear media. `cosine`: of the light to
/// the normal, 0 to 1; `n`: index of refraction of the far medium over that of the near one.
float fresnelShare(float cosine, float n);

/// How rough a surface is, in the terms of the microfacet lobes.
struct FacetShape {
    float alpha = 0.0f;
    int type = 0;
    float tail = 2.0f;

    /// `roughness`: 0 to 1, its square is the width of the lobe; below 0.04 the surface is smooth.
    static FacetShape of(float roughness, float tail);

    bool isSmooth() const { return alpha == 0.0f; }
    /// What a white surface mirrors of light that comes evenly from all sides, when light that
    /// meets more than one facet is lost. `cosine`: of the view to the normal.
    float albedo(float cosine) const;
};

/// A facet that was chosen, and where it mirrors the view to.
struct FacetSample {
    Vector facet;      ///< unit, on the viewer's side
    Vector direction;  ///< the view, mirrored at it
    float pdf;         ///< of the direction, 2 pi times the density per solid angle
    float weight;      ///< of light from there
};

/// The rough surface of one hit: the lobe, and the axes in which it lies.
struct FacetLobe {
    FacetShape shape;
    Matrix toWorld, toLocal;
    Vector view;  ///< the ray's direction

    /// Sets all fields for the viewer's side of the hit, about its shading normal as it now stands.
    void place(const FacetShape& shape, const PelkContext& context);

    const Vector& normal() const { return toWorld.columns[2]; }
    float viewCosine() const { return -dot(normal(), view); }
    /// pi times the lobe's value times the cosine of the light; `pdf` as in FacetSample. A smooth
    /// surface answers 0.
    float eval(const Vector& direction, float& pdf) const;
    FacetSample sample(Random2 random) const;
    /// The facet that mirrors the view to `direction`.
    Vector facetFor(const Vector& direction) const { return normalizeGuarded(direction - view); }
    /// The weight of the direction to which the facet refracts the view, with the probability
    /// density by which `sample` chooses facets. Walter et al., EGSR 2007, eq. 41.
    float refractedWeight(const Vector& facet, const Vector& direction) const;
};

/// Who finds the lights that a rough surface mirrors.
enum class LightSearch {
    LightLoop,  ///< the light loop alone, as the surface traces no rays of its own
    Both,       ///< also its own rays, each with its share
    OwnRays,    ///< its own rays alone: of the surface below a matte only those are kept
    Apart,      ///< the light loop, and of lights that it doesn't know its own rays: light without
                ///< shadows comes from where a ray could not meet it
};

inline LightSearch lightSearchAt(const PelkContext& context, bool tracesRays) {
    if (!tracesRays)
        return LightSearch::LightLoop;
    if (context.shadedFlags & kShadedMatte)
        return LightSearch::OwnRays;
    return context.shadeFlags & kShadeNoShadows ? LightSearch::Apart : LightSearch::Both;
}

/// The density that a surface's own ray is weighted with against lights, `density` being that of
/// its direction per solid angle; below 0 if the ray sees lights in full.
inline float densityOfOwnRay(LightSearch lights, const FacetShape& shape, float density) {
    if (shape.isSmooth() || lights == LightSearch::OwnRays)
        return -1.0f;
    return lights == LightSearch::Apart ? kLeavesLights : density;
}

/// Whether mirror rays are traced at the hit.
bool tracesMirrorRays(const PelkContext& context);

/// Whether a direction leaves the hit on the side of the geometry from which the ray came.
inline bool leavesOnViewerSide(const PelkContext& context, const Vector& direction) {
    // In double: near the silhouette only the signs of tiny products count.
    return -dotDouble(context.rayDir, context.geomNormal) *
               dotDouble(direction, context.geomNormal) >
           0.0f;
}

}  // namespace Tarnkit
