#include <numbers>
#include <utility>

#include "frame/surface_properties.h"
#include "render/host_renderer.h"
#include "render/sampling.h"

namespace Tarnkit {

namespace {

/// Indirect light reaches a face from its own side. A one-sided sampler's back gets none; a
/// context that was turned over asks for the side to which its normal points.
bool facesIndirectLight(const PelkContext& c) {
    return !c.backSide || c.flippedSide;
}

/// The density of rays that leave sampled lights to the light loop: next to nothing against that of
/// any light, but not 0, so that a light that is never sampled is still seen.
constexpr float kLeavesLights = 1e-12f;

}  // namespace

void PathGi::irradiance(Color& out, PelkContext& context) {
    RenderContext& c = hostContext(context);
    out = Color(0);
    // Found out for one sampler, so it holds for the light that is asked for right after.
    const bool unseen = std::exchange(c.diffuseIsBlack, false);
    if (!enabled || unseen || !facesIndirectLight(c))
        return;
    float cosine;
    const Vector direction =
        cosineDirection(c.normal, random2(c.pathSeed, c.sampleIndex, RandomUse::Indirect), cosine);
    if (!(dot(direction, c.geomNormal) > 0.0f))
        return;  // below the surface, by the difference of its two normals
    RenderContext* ray = renderer.spawn(c, kRayGi);
    ray->rayType =
        (c.rayType & RenderContext::kPathBits) | kRayGi | (bumpInGi ? u32{kRayGiBump} : 0u);
    ray->traceDepth = c.traceDepth + 1;
    ray->giDepth = c.giDepth + 1;
    ray->rayDir = ray->rayDir2 = direction;
    // A surface that leaves lights out of the weighting has had all their light from the light
    // loop; so has a back that asks for light, as on the far side of a thin surface, since its
    // samplers were made before it asked.
    const bool weighted = usesLightMis(c) && !c.backSide;
    ray->bsdfDensity = weighted ? cosine * std::numbers::inv_pi_v<float> : kLeavesLights;
    ray->spawnWeight = Color(1);
    ray->rayWeight = c.rayWeight;
    ray->rayWeight2 = c.rayWeight2;
    renderer.trace(*ray);
    out = ray->traceResult;
    ray->releaseContext();
}

int PathGi::usesLightMis(PelkContext& context) {
    const bool matte = context.surfaceProperties && context.surfaceProperties->matte_surface;
    // Light without shadows comes from where no ray could meet it.
    const bool shadowed = !(context.shadeFlags & kShadeNoShadows);
    return enabled && !matte && shadowed && facesIndirectLight(context);
}

void PathGi::evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) {
    RenderContext& c = hostContext(context);
    const Vector normal = c.backSide ? -c.normal : c.normal;
    float cosine;
    const Vector direction =
        cosineDirection(normal, random2(c.pathSeed, c.sampleIndex, RandomUse::Matte), cosine);
    unshadowed = renderer.plainSurroundings(c, direction);
    shadowed = renderer.shadowed(c, direction, kRayFar, unshadowed);
}

}  // namespace Tarnkit
