#include "pelk/materials/surface/mtl_diffuse.h"

#include <algorithm>

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/sections.h"

namespace {

constexpr ParamTable kParams{
    colorParam("diffuse", &DiffuseParams::diffuse, Color(0.5f)),
    textureParam("diffuse_tex", &DiffuseParams::diffuseTex),
    floatParam("diffuse_tex_mult", &DiffuseParams::diffuseTexMult, 1.0f),
    colorParam("reflection", &DiffuseParams::reflection, Color(0)),
    colorParam("transparency", &DiffuseParams::transparency, Color(0)),
    pluginParam<RenderChannelInterface>("render_channel_color", &DiffuseParams::renderChannelColor),
    pluginParam<RenderChannelInterface>("render_channel_alpha", &DiffuseParams::renderChannelAlpha),
};

/// What a mirror of that colour leaves to the Lambert lobe below it. One number for all channels: a
/// red mirror would otherwise dye the diffuse light cyan.
float shareBelow(Color mirror) {
    return std::max(0.0f, 1.0f - mean(mirror));
}

/// Spawns, traces and adds the mirror ray. `weight`: what its radiance is multiplied by, which also
/// goes into the ray's throughput.
void addReflection(PelkContext& context, Color weight) {
    const Vector r = mirrorDirection(context);
    const ScopedRay ray(context.newSpawnedContext(0, weight, kSpawnMirror, r));
    if (!ray)
        return;
    ray->rayClipDistance = static_cast<float>(kRayFar);
    if (const PelkContext* parent = ray->parentContext) {
        ray->rayDir = ray->rayDir2 = r;
        ray->rayOrigin = ray->spawnOrigin;
        ray->parentHitLink = parent->hitLink;
        ray->rayMinT = 0.0;
        ray->rayMaxT = kRayFar;
    }
    context.renderer->traceRay(*ray);
    context.resultColor += weight * ray->traceResult;
}

}  // namespace

ParamRows<DiffuseParams> DiffuseParams::table() {
    return kParams;
}

void MtlDiffuse::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    colorChannel = findChannelIndex(params.renderChannelColor);
    alphaChannel = findChannelIndex(params.renderChannelAlpha);
}

void MtlDiffuse::shade(PelkContext& context) {
    if ((context.rayType & kRayShadow) || context.backSide)
        shadeFilter(context);
    else
        shadeSurface(context);
    if (Fragment* fragment = context.resultFragment) {
        // A fragment ignores the index -1, of a channel that isn't there.
        fragment->setChannel(colorChannel, &context.resultColor);
        fragment->setChannel(alphaChannel, &context.resultAlpha);
    }
}

void MtlDiffuse::shadeFilter(PelkContext& context) const {
    setFilterResults(context, params.transparency);
}

void MtlDiffuse::shadeSurface(PelkContext& context) const {
    DefaultGlobalLightManager* giEngine = context.renderer->sequenceData.giEngine;
    const Color opacity = complement(params.transparency);
    const Color mirror = opacity * params.reflection;

    DiffuseBRDF brdf;
    brdf.diffuse = textureBlend(context, params.diffuse, params.diffuseTex, params.diffuseTexMult) *
                   shareBelow(mirror) * opacity;
    brdf.reflection = params.reflection;
    brdf.lightMis = giEngine->usesLightMis(context);

    Color direct, indirect;
    context.computeDirectLighting(direct, &brdf);
    giEngine->irradiance(indirect, context);
    setResults(context, brdf.diffuse * indirect + direct, params.transparency, opacity,
               params.transparency);
    if (tracesReflection(context))
        addReflection(context, mirror);
}

bool MtlDiffuse::tracesReflection(const PelkContext& context) const {
    const SequenceData& settings = context.renderer->sequenceData;
    if (context.traceDepth >= settings.maxRayDepth)
        return false;
    if ((context.rayType & kRayGi) && !settings.reflectiveGi)
        return false;
    // The bound goes by the reflection as it was set, not by what transparency leaves of it.
    const Color weight = params.reflection * context.rayWeight;
    return !(weight.r * weight.r + weight.g * weight.g + weight.b * weight.b < 1e-6f);
}

BSDFSampler* MtlDiffuse::getBSDF(PelkContext& context, int) {
    auto brdf = pool.borrow(context);
    if (!brdf)
        return nullptr;
    brdf->diffuse =
        textureBlend(context, params.diffuse, params.diffuseTex, params.diffuseTexMult) *
        shareBelow(params.reflection);
    brdf->reflection = params.reflection;
    brdf->lightMis = context.renderer->sequenceData.giEngine->usesLightMis(context);
    return brdf.handOut();
}

int MtlDiffuse::getMaterialSource(void*, const char* sourceName, const char* kind,
                                  ShaderSource& source, OCLData& data) {
    if (!isSection(kind, kMaterialSection))
        return 0;
    source.append("diffuse\n");
    if (params.diffuseTex) {
        RTTexInterface::getRTTexSource(params.diffuseTex, "float", sourceName, kind, source, data);
        source.printf("bitmap_mult %f\n", params.diffuseTexMult);
    }
    const Color c = params.diffuse;
    source.printf("color_value %f %f %f\n", c.r, c.g, c.b);
    return 1;
}

namespace Tarnkit {

/// An opaque layer: no light is left for those below it.
Color DiffuseBRDF::getDiffuseColor(Color& lightColor) {
    const Color reflected = lightColor * diffuse;
    lightColor = Color(0);
    return reflected;
}

Color DiffuseBRDF::getLightMult(Color& lightColor) {
    return getDiffuseColor(lightColor);
}

Color DiffuseBRDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                        Color& origLightColor, float probLight, int flags) {
    Color reflected;
    if (flags & kEvalDiffuse) {
        float cosine = std::max(0.0f, dotDouble(context.normal, direction));
        if (lightMis) {
            // The power heuristic for the light's sample: against it stands the density by which
            // cosine sampling finds this direction, cosine / pi, in the scale of `probLight`: 2 pi
            // times the density per solid angle. The weight is rounded before it meets the cosine;
            // the matte's sampler multiplies first. The two differ in the last bit, and each keeps
            // its order: rendered pictures are compared bit by bit.
            const float own = 2.0f * cosine;
            const float sum = own * own + probLight * probLight;
            // Where both densities are 0 there is nothing to weight.
            cosine *= sum != 0.0f ? probLight * probLight / sum : 0.0f;
        }
        reflected = lightColor * diffuse * cosine;
    }
    lightColor = origLightColor = Color(0);
    return reflected;
}

void DiffuseBRDF::traceForward(PelkContext& context, int doDiffuse) {
    Color scattered;
    if (doDiffuse != kWithoutIndirectDiffuse) {
        context.renderer->sequenceData.giEngine->irradiance(scattered, context);
        scattered = diffuse * scattered;
    }
    setResults(context, scattered, Color(0), Color(1), Color(0));
}

int DiffuseBRDF::getNumSamples(PelkContext&, int) {
    return 0;
}

Color DiffuseBRDF::getTransparency(PelkContext&) {
    return Color(0);
}

/// The one ray is the mirror's. A caller that takes no rays, as one that stores diffuse light, gets
/// none.
PelkContext* DiffuseBRDF::getNewContext(PelkContext& context, int&, int doDiffuse) {
    if (doDiffuse == kWithoutOwnRays || mean(reflection) < 1e-10f)
        return nullptr;
    return context.newSpawnedContext(1, reflection, kSpawnMirror, -context.rayDir);
}

float DiffuseBRDF::setupContext(PelkContext& context, PelkContext& newContext, float, int) {
    const Vector r = mirrorDirection(context);
    Vector h = r - context.rayDir;
    const float len = length(h);
    if (!isCollapsed(h, len))
        h = {h.x / len, h.y / len, h.z / len};
    setMirrorRay(context, newContext, r, h);
    return 1.0f;
}

BRDFSampler* DiffuseBRDF::getBRDF(BSDFSide side) {
    return side == kFrontSide ? this : nullptr;
}

}  // namespace Tarnkit
