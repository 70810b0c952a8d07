#pragma once

#include "pelk/contract/context.h"
#include "pelk/host/trace/sampling.h"
#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

/// Fresnel reflectance of unpolarised light between two dielectrics, 0 to 1; 1 is total internal
/// reflection. `cosine`: of the incident direction to the normal, 0 to 1; `n`: index of refraction
/// of the far medium over that of the near one.
float fresnelShare(float cosine, float n);

/// Parameters of the GTR microfacet distribution of a surface.
struct FacetShape {
    float alpha = 0.0f;  ///< width, 0 to 1; 0 is a mirror
    int type = 0;        ///< which formula sampleGTR and evalGTR take for the tail: a kGtr constant
    float tail = 2.0f;   ///< exponent, 0 to 10: GGX has 2, longer tails less

    /// `roughness`: 0 to 1, its square is the width of the lobe; below 0.04 the surface is smooth.
    static FacetShape of(float roughness, float tail);

    bool isSmooth() const { return alpha == 0.0f; }
    /// Directional albedo of the single-scattering lobe without Fresnel: what it reflects in white
    /// surroundings; the rest is lost to multiple scattering. `cosine`: of the view to the normal.
    float albedo(float cosine) const;
};

/// A sampled microfacet normal, and the direction in which it reflects the view.
struct FacetSample {
    Vector facet;      ///< unit, on the viewer's side
    Vector direction;  ///< the view, reflected there
    float pdf;         ///< of the direction, 2 pi times the density per solid angle
    float weight;      ///< lobe times cosine over density, without Fresnel
};

/// The microfacet lobe of one hit, in a tangent frame about the shading normal.
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
    /// The half vector: the facet that reflects the view to `direction`.
    Vector facetFor(const Vector& direction) const { return normalizeGuarded(direction - view); }
    /// The weight of the direction to which the facet refracts the view, with the probability
    /// density by which `sample` chooses facets. Walter et al., EGSR 2007, eq. 41.
    float refractedWeight(const Vector& facet, const Vector& direction) const;
};

/// Which technique finds the highlights of lights in a rough surface: next-event estimation by the
/// light loop, the reflected rays of the surface itself, or both under MIS.
enum class LightSearch {
    LightLoop,  ///< next-event estimation alone: no reflected rays are traced
    Both,       ///< both, weighted by the power heuristic
    OwnRays,    ///< reflected rays alone: a matte keeps nothing else of the surface below it
    Apart,  ///< next-event estimation in full, as without shadows it finds lights that a ray can't
            ///< reach; reflected rays have next to no MIS weight
};

inline LightSearch lightSearchAt(const PelkContext& context, bool tracesRays) {
    if (!tracesRays)
        return LightSearch::LightLoop;
    if (context.shadedFlags & kShadedMatte)
        return LightSearch::OwnRays;
    return context.shadeFlags & kShadeNoShadows ? LightSearch::Apart : LightSearch::Both;
}

/// RenderContext::bsdfDensity of a reflected ray whose direction has `density` per solid angle:
/// below 0 without MIS, as for a mirror, in which next-event estimation finds nothing.
inline float densityOfOwnRay(LightSearch lights, const FacetShape& shape, float density) {
    if (shape.isSmooth() || lights == LightSearch::OwnRays)
        return -1.0f;
    return lights == LightSearch::Apart ? kNegligibleDensity : density;
}

/// Whether mirror rays are traced at the hit.
bool tracesMirrorRays(const PelkContext& context);

/// Whether a direction leaves on the viewer's side of the geometric (not the shading) surface.
inline bool leavesOnViewerSide(const PelkContext& context, const Vector& direction) {
    // In double: near the silhouette only the signs of tiny products count.
    return -dotDouble(context.rayDir, context.geomNormal) *
               dotDouble(direction, context.geomNormal) >
           0.0f;
}

}  // namespace Tarnkit
