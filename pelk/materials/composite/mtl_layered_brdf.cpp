#include "pelk/materials/composite/mtl_layered_brdf.h"

#include "pelk/contract/shading.h"

namespace {

constexpr ParamTable kParams{
    pluginListParam<BSDFInterface>("brdfs", &LayeredBRDFParams::brdfs),
    boolParam("double_sided", &LayeredBRDFParams::doubleSided, true,
              "1 to make the material double-sided"),
};

}  // namespace

ParamRows<LayeredBRDFParams> LayeredBRDFParams::table() {
    return kParams;
}

void MtlLayeredBRDF::frameBegin(PelkRenderer& renderer) {
    PelkMaterial::frameBegin(renderer);
    bsdfInterfaces.resize(params.brdfs.count);
    for (int i = 0; i < params.brdfs.count; ++i)
        bsdfInterfaces[i] = findInterface<BSDFInterface>(params.brdfs.items[i]);
    pool.begin(renderer);
    warned = 0;
}

void MtlLayeredBRDF::frameEnd(PelkRenderer&) {
    pool.end();
    bsdfInterfaces.free();
}

void MtlLayeredBRDF::shade(PelkContext& context) {
    if (params.brdfs.count == 0) {
        if (Fragment* fragment = context.resultFragment)
            fragment->clear(1);
        return setOpaqueBlack(context);
    }
    {
        const ScopedSampler sampler(context, *this, params.doubleSided ? 0 : kSingleSided);
        if (!sampler.get())
            return setFullyTransparent(context);
        shadeLayers(context, sampler.get());
    }
    repairResultColor(context, *this, false, warned);
}

void MtlLayeredBRDF::shadeLayers(PelkContext& context, BSDFSampler* sampler) const {
    if (context.rayType & kRayShadow)
        return setFilterResults(context, sampler->getBSDFTransparency(context));
    Color direct;
    context.computeDirectLighting(direct, sampler);
    sampler->traceBSDFForward(context, kAllIndirect);
    context.resultColor += direct;
}

BSDFSampler* MtlLayeredBRDF::getBSDF(PelkContext& context, int flags) {
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    try {
        fillLayers(context, params.doubleSided ? flags : flags | kSingleSided, *element);
    } catch (...) {
        // Out of memory: the samplers of the layers so far go back.
        releaseLayers(context, *element);
        throw;
    }
    return element.handOut();
}

void MtlLayeredBRDF::fillLayers(PelkContext& context, int flags, LayeredBSDF& layers) {
    // A layer is made with the weight that those above it leave.
    const ScopedValue weight(context.rayWeight, context.rayWeight);
    layers.setNumBSDFs(context, bsdfInterfaces.size(), 0);
    layers.setTransparency(Color(0));
    for (int i = 0; i < bsdfInterfaces.size(); ++i) {
        if (BSDFInterface* bsdf = bsdfInterfaces[i])
            layers.setBSDF(i, takeSampler(*bsdf, context, flags), Color(0), 0);
        else
            layers.setBSDF(i, nullptr, Color(1), 0);
    }
}

void MtlLayeredBRDF::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler)
        return;
    releaseLayers(context, static_cast<LayeredBSDF&>(*sampler));
    pool.giveBack(context, sampler);
}

void MtlLayeredBRDF::releaseLayers(PelkContext& context, LayeredBSDF& layers) const {
    for (int i = 0; i < layers.getNumBSDFs(); ++i) {
        BSDFSampler* layer = layers.getBSDF(i);
        if (layer && bsdfInterfaces[i])
            giveSampler(*bsdfInterfaces[i], context, layer);
    }
}
