#include "pelk/contract/samplers.h"

#include "pelk/contract/channel_alias.h"
#include "pelk/contract/context.h"
#include "pelk/contract/fragment.h"
#include "pelk/contract/private/indirect_light.h"
#include "pelk/contract/renderer.h"
#include "pelk/contract/shading.h"

namespace Tarnkit {
namespace {

/// What a black, opaque surface does to light: reflects none, and leaves none for layers below.
Color takeAll(Color& lightColor) {
    lightColor = Color(0);
    return Color(0);
}

/// Enters what a sampler's own ray brought in the render channels of the hit. `traced` is weighted
/// by `weight`, the throughput of that ray.
void noteRay(PelkContext& context, bool refracted, const Color& traced, const Color& weight) {
    Fragment* fragment = context.resultFragment;
    if (!fragment)
        return;
    if (refracted) {
        fragment->addAlias(kAliasRefraction, &traced);
    } else {
        fragment->addAlias(kAliasReflection, &traced);
        fragment->addAlias(kAliasReflectionFilter, &weight);
    }
}

/// Samples the lobe that the BRDF traces by itself with one ray, and adds what it sees.
void traceOwnRay(PelkContext& context, BRDFSampler& brdf, int doDiffuse) {
    int sampler = 0;
    const ScopedRay ray(brdf.getNewContext(context, sampler, doDiffuse));
    if (!ray)
        return;
    // Any number would do: a mirror needs none, and a lobe with a width draws its own.
    const Color weight = ray->spawnWeight * brdf.setupContext(context, *ray, 0.5f, sampler);
    const bool refracted = ray->spawnFlags & kRayRefract;
    context.renderer->traceRay(*ray);
    const Color traced = ray->traceResult * weight;
    context.resultColor += traced;
    noteRay(context, refracted, traced, weight);
}

}  // namespace

Color gatherIrradiance(PelkContext& context, BRDFSampler& brdf) {
    if (!context.renderer || !context.renderer->sequenceData.giEngine)
        return Color(0);
    const ScopedValue normal(context.normal, brdf.getDiffuseNormal(context));
    Color light;
    context.renderer->sequenceData.giEngine->irradiance(light, context);
    return light;
}

Color BRDFSampler::getDiffuseColor(Color& lightColor) {
    return takeAll(lightColor);
}

Vector BRDFSampler::getDiffuseNormal(PelkContext& context) {
    return context.normal;
}

Color BRDFSampler::getLightMult(Color& lightColor) {
    return takeAll(lightColor);
}

Color BRDFSampler::eval(PelkContext&, const Vector&, Color& lightColor, Color& origLightColor,
                        float, int) {
    takeAll(origLightColor);
    return takeAll(lightColor);
}

void BRDFSampler::multiplyLight(float) {}

void BRDFSampler::lightFinished(int) {}

int BRDFSampler::getUseIrradianceMap() {
    return 1;
}

void BRDFSampler::traceForward(PelkContext& context, int doDiffuse) {
    const Color transparency = getTransparency(context);
    const Color opacity = complement(transparency);
    Color color = getSelfIllumination(context);
    if (doDiffuse != kWithoutIndirectDiffuse) {
        Color white(1);
        const Color diffuse = opacity * getDiffuseColor(white);
        // Gathering traces a whole path; none is spent on a surface that is diffusely black.
        if (diffuse != Color(0))
            color += diffuse * gatherIrradiance(context, *this);
    }
    setResults(context, color, transparency, opacity, transparency);
}

int BRDFSampler::getNumSamples(PelkContext&, int) {
    return 0;
}

Color BRDFSampler::getTransparency(PelkContext&) {
    return Color(0);
}

Color BRDFSampler::getColor(PelkContext&, Color color) {
    return color;
}

Color BRDFSampler::getAlpha(PelkContext&, Color alpha) {
    return alpha;
}

PelkContext* BRDFSampler::getNewContext(PelkContext&, int&, int) {
    return nullptr;
}

float BRDFSampler::setupContext(PelkContext&, PelkContext&, float, int) {
    return 0.0f;
}

RenderChannelsInfo* BRDFSampler::getRenderChannels() {
    return nullptr;
}

int BRDFSampler::getNumSubBRDFs() {
    return 0;
}

BRDFSampler* BRDFSampler::getSubBRDF(int, Color&) {
    return nullptr;
}

Color BRDFSampler::getSelfIllumination(PelkContext&) {
    return Color(0);
}

void BRDFSampler::evalPdfs(const Vector&, float& forward, float& backward, int) {
    forward = backward = 0.0f;
}

/// A sampler that isn't made of others is the only choice there is, and a certain one.
BRDFSampler* BRDFSampler::chooseRandomSubBRDF(float&, float&, Color&, int) {
    return this;
}

BRDFSampler* BSDFSampler::getBRDF(BSDFSide) {
    return nullptr;
}

void BSDFSampler::traceBSDFForward(PelkContext& context, int doDiffuse) {
    BRDFSampler* brdf = resolveBRDF(context, this);
    if (!brdf)
        return setFullyTransparent(context);
    brdf->traceForward(context, doDiffuse);
    traceOwnRay(context, *brdf, doDiffuse);
}

Color BSDFSampler::getBSDFTransparency(PelkContext& context) {
    BRDFSampler* brdf = resolveBRDF(context, this);
    return brdf ? brdf->getTransparency(context) : Color(1);
}

PelkVolume* BSDFSampler::getVolume(PelkContext&) {
    return nullptr;
}

BRDFSampler* resolveBRDF(BSDFSide side, BSDFSampler* bsdf) {
    BRDFSampler* brdf = bsdf->getBRDF(side);
    return brdf ? brdf : bsdf->getBRDF(side == kBackSide ? kFrontSide : kBackSide);
}

BRDFSampler* resolveBRDF(PelkContext& context, BSDFSampler* bsdf) {
    return resolveBRDF(context.backSide ? kBackSide : kFrontSide, bsdf);
}

}  // namespace Tarnkit
