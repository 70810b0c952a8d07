#include "pelk/materials/composite/mtl_double_sided.h"

#include "pelk/contract/shading.h"

namespace {

constexpr ParamTable kParams{
    pluginParam<MaterialInterface>("base_mtl", &DoubleSidedParams::baseMtl, "Base material"),
};

}  // namespace

ParamRows<DoubleSidedParams> DoubleSidedParams::table() {
    return kParams;
}

void MtlDoubleSided::frameBegin(PelkRenderer& renderer) {
    FramePooled::frameBegin(renderer);
    baseMaterial = findInterface<MaterialInterface>(params.baseMtl);
    baseBSDF = findInterface<BSDFInterface>(params.baseMtl);
}

void MtlDoubleSided::shade(PelkContext& context) {
    if (!baseMaterial)
        return setOpaqueBlack(context);
    const ScopedFlip front(context, context.backSide != 0);
    callShade(*baseMaterial, context);
}

BSDFSampler* MtlDoubleSided::getBSDF(PelkContext& context, int flags) {
    if (!baseBSDF)
        return nullptr;
    // Taken before the base is asked: if there is no memory, no sampler of its own is lost.
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    element->flipped = context.backSide;
    element->brdf = nullptr;
    const ScopedFlip front(context, context.backSide != 0);
    element->bsdf = takeSampler(*baseBSDF, context, flags);
    return element->bsdf ? element.handOut() : nullptr;
}

void MtlDoubleSided::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler || !baseBSDF)
        return;
    auto* element = static_cast<PoolElement<BackSideBSDF>*>(sampler);
    giveSampler(*baseBSDF, context, element->bsdf);
    pool.giveBack(context, element);
}

BRDFSampler* BackSideBSDF::getBRDF(BSDFSide side) {
    brdf = bsdf->getBRDF(side);
    return brdf ? this : nullptr;
}

Color BackSideBSDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                         Color& origLightColor, float probLight, int flags) {
    const ScopedFlip asMade(context, flipped != 0);
    return brdf->eval(context, direction, lightColor, origLightColor, probLight, flags);
}

void BackSideBSDF::traceForward(PelkContext& context, int doDiffuse) {
    const ScopedFlip turned(context);
    brdf->traceForward(context, doDiffuse);
}

Color BackSideBSDF::getDiffuseColor(Color& lightColor) {
    return brdf->getDiffuseColor(lightColor);
}

Color BackSideBSDF::getLightMult(Color& lightColor) {
    return brdf->getLightMult(lightColor);
}

void BackSideBSDF::multiplyLight(float factor) {
    brdf->multiplyLight(factor);
}

void BackSideBSDF::lightFinished(int light) {
    brdf->lightFinished(light);
}

int BackSideBSDF::getUseIrradianceMap() {
    return brdf->getUseIrradianceMap();
}

int BackSideBSDF::getNumSamples(PelkContext& context, int doDiffuse) {
    return brdf->getNumSamples(context, doDiffuse);
}

Color BackSideBSDF::getTransparency(PelkContext& context) {
    return brdf->getTransparency(context);
}

PelkContext* BackSideBSDF::getNewContext(PelkContext& context, int& sampler, int doDiffuse) {
    return brdf->getNewContext(context, sampler, doDiffuse);
}

float BackSideBSDF::setupContext(PelkContext& context, PelkContext& newContext, float random,
                                 int sample) {
    return brdf->setupContext(context, newContext, random, sample);
}
