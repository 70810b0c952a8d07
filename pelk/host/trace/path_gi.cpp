#include "pelk/host/trace/path_gi.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "pelk/contract/shading.h"
#include "pelk/contract/surface_properties.h"
#include "pelk/host/trace/host_renderer.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

/// A one-sided sampler's back gets no indirect light, unless the context was turned over for it.
bool facesIndirectLight(const PelkContext& c) {
    return !c.backSide || c.flippedSide;
}

/// A surface may ask for more rays; what is itself only seen by indirect rays gets one, or paths
/// would multiply.
int raysAt(const RenderContext& c) {
    constexpr float kMostRays = 1024.0f;
    if (!c.surfaceProperties || c.giDepth > 0)
        return 1;
    const float rays = c.surfaceProperties->gi_quality_multiplier;
    return rays > 1.0f ? static_cast<int>(std::fmin(std::round(rays), kMostRays)) : 1;
}

}  // namespace

void PathGi::irradiance(Color& out, PelkContext& context) {
    RenderContext& c = hostContext(context);
    out = Color(0);
    // Found out for one sampler, so it holds for the light that is asked for right after.
    const bool unseen = std::exchange(c.diffuseIsBlack, false) && !c.gathersBeyond;
    const float received = c.surfaceProperties ? c.surfaceProperties->receive_gi : 1.0f;
    if (!enabled || unseen || received == 0.0f || !(facesIndirectLight(c) || c.gathersBeyond))
        return;
    const int rays = raysAt(c);
    for (int ray = 0; ray < rays; ++ray)
        out += gather(c, ray);
    out *= received / static_cast<float>(rays);
}

Color PathGi::gather(RenderContext& c, int index) {
    // The viewer's side, whichever way the context is turned; or the other one.
    const bool turned = (c.backSide != 0) != (c.gathersBeyond != 0);
    const Vector normal = turned ? -c.normal : c.normal;
    float cosine;
    const Vector direction =
        cosineDirection(normal, c.random(RandomUse::Indirect, static_cast<u32>(index)), cosine);
    const float above = dot(direction, c.geomNormal);
    if (!(turned ? above < 0.0f : above > 0.0f))
        return Color(0);  // below the surface, by the difference of its two normals
    RenderContext* const ray = renderer.spawn(c, kRayGi + (static_cast<u32>(index) << 8));
    const ScopedRay owner(ray);
    ray->rayType =
        (c.rayType & RenderContext::kPathBits) | kRayGi | (bumpInGi ? u32{kRayGiBump} : 0u);
    ray->traceDepth = c.traceDepth + 1;
    ray->giDepth = c.giDepth + 1;
    ray->rayDir = ray->rayDir2 = direction;
    // A surface that leaves lights out of the weighting has had all their light from the light
    // loop; so has the side beyond, whose samplers were told so as backs.
    const bool weighted = !c.gathersBeyond && (c.lightMis == -1 ? usesLightMis(c) : c.lightMis);
    ray->bsdfDensity = weighted ? cosine * std::numbers::inv_pi_v<float> : kLeavesLights;
    ray->gathers = true;
    ray->receiveCaustics = c.surfaceProperties ? c.surfaceProperties->receive_caustics : 1.0f;
    ray->spawnWeight = Color(1);
    ray->rayWeight = c.rayWeight;
    ray->rayWeight2 = c.rayWeight2;
    renderer.trace(*ray);
    return ray->traceResult;
}

int PathGi::usesLightMis(PelkContext& context) {
    if (!enabled || !facesIndirectLight(context))
        return 0;
    // One answer at a hit: what one sampler has been told must hold when light is gathered, though
    // another one has changed the surface's properties since.
    int& told = hostContext(context).lightMis;
    if (told == -1)
        told = sharesLights(context);
    return told;
}

int PathGi::sharesLights(const PelkContext& context) const {
    // Indirect light of a matte isn't asked for, and what is scaled would scale lights too.
    const PelkSurfaceProperties* surface = context.surfaceProperties;
    const bool scaled = surface && (surface->matte_surface || surface->receive_gi != 1.0f);
    // Light without shadows comes from where no ray could meet it.
    const bool isShadowed = !(context.shadeFlags & kShadeNoShadows);
    return !scaled && isShadowed;
}

void PathGi::evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) {
    RenderContext& c = hostContext(context);
    unshadowed = shadowed = Color(0);
    const int rays = enabled ? raysAt(c) : 0;
    for (int ray = 0; ray < rays; ++ray)
        gatherMatte(c, ray, unshadowed, shadowed);
    if (rays > 1) {
        unshadowed *= 1.0f / static_cast<float>(rays);
        shadowed *= 1.0f / static_cast<float>(rays);
    }
}

void PathGi::gatherMatte(RenderContext& c, int index, Color& unshadowed, Color& shadowed) {
    const bool fromBehind = c.backSide != 0;
    float cosine;
    const Vector direction =
        cosineDirection(fromBehind ? -c.normal : c.normal,
                        c.random(RandomUse::Matte, static_cast<u32>(index)), cosine);
    if ((dot(direction, c.geomNormal) > 0.0f) == fromBehind)
        return;  // the surface's own shape is no shadow on it
    const Color light = renderer.plainSurroundings(c, direction);
    unshadowed += light;
    shadowed +=
        c.shadeFlags & kShadeNoShadows ? light : renderer.shadowed(c, direction, kRayFar, light);
}

}  // namespace Tarnkit
