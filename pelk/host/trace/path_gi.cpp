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

/// Whether the viewer is on the front side of the hit as it now stands; backs get no indirect light
/// by default. A two-sided material turns the hit over for the sampler of its back.
bool facesIndirectLight(const PelkContext& c) {
    return !c.backSide || c.flippedSide;
}

/// Indirect rays to trace from the hit. Behind a diffuse bounce it is one, or paths would multiply.
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
    // The light loop leaves this note on the sampler that it lit last, and the caller asks for that
    // sampler's indirect light next: one use, then it is forgotten.
    const bool isBlack = std::exchange(c.diffuseIsBlack, false) && !c.gathersBeyond;
    const float received = c.surfaceProperties ? c.surfaceProperties->receive_gi : 1.0f;
    if (!enabled || isBlack || received == 0.0f || !(facesIndirectLight(c) || c.gathersBeyond))
        return;
    const int rays = raysAt(c);
    for (int ray = 0; ray < rays; ++ray)
        out += gather(c, ray);
    out *= received / static_cast<float>(rays);
}

Color PathGi::gather(RenderContext& c, int index) {
    // The hemisphere on the viewer's side of the surface, or behind it for a translucent one.
    const bool turned = (c.backSide != 0) != (c.gathersBeyond != 0);
    const Vector normal = turned ? -c.normal : c.normal;
    float cosine;
    const Vector direction =
        cosineDirection(normal, c.random(RandomUse::Indirect, static_cast<u32>(index)), cosine);
    const float above = dot(direction, c.geomNormal);
    if (!(turned ? above < 0.0f : above > 0.0f))
        return Color(0);  // above the shading normal's plane, yet below the geometric surface
    RenderContext* const ray = renderer.spawn(c, kRayGi + (static_cast<u32>(index) << 8));
    const ScopedRay owner(ray);
    ray->rayType =
        (c.rayType & RenderContext::kPathBits) | kRayGi | (bumpInGi ? u32{kRayGiBump} : 0u);
    ray->traceDepth = c.traceDepth + 1;
    ray->giDepth = c.giDepth + 1;
    ray->rayDir = ray->rayDir2 = direction;
    // Density per solid angle for the MIS weight of a light that the ray hits. Without MIS the
    // light loop has brought all direct light already, and the ray must find next to none again.
    // The far side of a translucent surface has no MIS, as usesLightMis told the sampler of a back.
    const bool weighted = !c.gathersBeyond && (c.lightMis == -1 ? usesLightMis(c) : c.lightMis);
    ray->bsdfDensity = weighted ? cosine * std::numbers::inv_pi_v<float> : kNegligibleDensity;
    ray->isIndirectDiffuse = true;
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
    // One answer at a hit: a sampler that left out half of the MIS weight counts on indirect rays
    // to bring it, even if another sampler has changed the surface's properties by then.
    int& told = hostContext(context).lightMis;
    if (told == -1)
        told = sharesLights(context);
    return told;
}

int PathGi::sharesLights(const PelkContext& context) const {
    // A matte traces no indirect rays that could bring the other half of the MIS weight, and a
    // receive_gi other than 1 would scale that half, which is direct light, too.
    const PelkSurfaceProperties* surface = context.surfaceProperties;
    const bool scaled = surface && (surface->matte_surface || surface->receive_gi != 1.0f);
    // Without shadows lights shine through geometry that would stop an indirect ray.
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
        return;  // below the geometric surface: left out of both sums, so it darkens neither alone
    const Color light = renderer.backgroundAlong(c, direction);
    unshadowed += light;
    shadowed +=
        c.shadeFlags & kShadeNoShadows ? light : renderer.shadowed(c, direction, kRayFar, light);
}

}  // namespace Tarnkit
