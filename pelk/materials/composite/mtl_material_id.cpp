#include "pelk/materials/composite/mtl_material_id.h"

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

constexpr ParamTable kParams{
    pluginParam<MaterialInterface>("base_mtl", &MaterialIDParams::baseMtl, "The base material"),
    textureParam("material_id_color", &MaterialIDParams::idColor, AColor{Color(0), 1.0f},
                 "The material id color"),
    intParam("material_id_number", &MaterialIDParams::idNumber, 0),
};

void writeIDs(PelkContext& context, TextureInterface* idColor, const int& idNumber) {
    Fragment* fragment = context.resultFragment;
    if (!fragment || (context.rayType & kRayShadow))
        return;
    const Color color = idColor ? idColor->getTexColor(context).color : Color(0);
    fragment->addAlias(kAliasMaterialIDColor, &color);
    fragment->addAlias(kAliasMaterialIDNumber, &idNumber);
}

}  // namespace

ParamRows<MaterialIDParams> MaterialIDParams::table() {
    return kParams;
}

void MtlMaterialID::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    baseMaterial = findInterface<MaterialInterface>(params.baseMtl);
    baseBSDF = findInterface<BSDFInterface>(params.baseMtl);
}

void MtlMaterialID::frameEnd(PelkRenderer&) {
    pool.reset();
}

void MtlMaterialID::shade(PelkContext& context) {
    if (baseMaterial)
        callShade(*baseMaterial, context);
    writeIDs(context, params.idColor, params.idNumber);
}

BSDFSampler* MtlMaterialID::getBSDF(PelkContext& context, int flags) {
    if (!baseBSDF)
        return nullptr;
    // Taken before the base is asked: if there is no memory, no sampler of its own is lost.
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    element->bsdf = takeSampler(*baseBSDF, context, flags);
    element->brdf = nullptr;
    element->idColor = params.idColor;
    element->idNumber = params.idNumber;
    return element->bsdf ? element.handOut() : nullptr;
}

void MtlMaterialID::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler || !baseBSDF)
        return;
    auto* element = static_cast<PoolElement<MaterialIDBSDF>*>(sampler);
    giveSampler(*baseBSDF, context, element->bsdf);
    pool.giveBack(context, element);
}

int MtlMaterialID::getMaterialID(PelkContext&) {
    return params.idNumber;
}

int MtlMaterialID::getOpaqueFlags() {
    return opaqueFlagsOf(params.baseMtl);
}

int MtlMaterialID::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                     ShaderSource& source, OCLData& data) {
    RTMtlInterface* base = findRTMtl(params.baseMtl);
    if (!base || !(isSection(kind, kMaterialSection) || isSection(kind, kHierarchySection)))
        return 0;
    source.printf("material_id_number %i\n", params.idNumber);
    return passThrough(base, {owner, sourceName, kind, source, data});
}

RTMtlInterface* MtlMaterialID::getMultiMtl() {
    return findMultiMtl(params.baseMtl);
}

void MaterialIDBSDF::traceForward(PelkContext& context, int doDiffuse) {
    ForwardingSampler::traceForward(context, doDiffuse);
    writeIDs(context, idColor, idNumber);
}
