#include "pelk/materials/surface/mtl_single_brdf.h"

#include "pelk/base/shared_field.h"
#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

constexpr ParamTable kParams{
    colorParam("filter", &SingleBRDFParams::filter, Color(1)),
    pluginParam<BSDFInterface>("brdf", &SingleBRDFParams::brdf),
    intParam("double_sided", &SingleBRDFParams::doubleSided, kBackShaded,
             "0 - single sided, 1 - to make the material double-sided, 2 - make back faces "
             "pointing at camera transparent for camera rays, 3 - make back faces transparent for "
             "all ray types except shadow rays, 4 - same as 3 but back faces are also visible to "
             "rays that have been refracted(and are not GI or reflection rays"),
    boolParam("allow_negative_colors", &SingleBRDFParams::allowNegativeColors, false,
              "true to allow negative color components; otherwise they will be clamped to 0"),
};

/// Whether the ray goes through the hit as if nothing were there.
bool isSeeThrough(const PelkContext& context, int doubleSided) {
    if (!context.backSide)
        return false;
    const u32 type = context.rayType;
    const bool isShadow = type & kRayShadow;
    const bool isRefracted = (type & kRayRefract) && !(type & (kRayReflect | kRayGi));
    switch (doubleSided) {
        case kBackHidesCamera:
            return context.traceDepth == 0 && (type & kRayCamera);
        case kBackHidesAll:
            return !isShadow;
        case kBackKeepsRefracted:
            return !isShadow && !isRefracted;
        default:
            return false;
    }
}

}  // namespace

ParamRows<SingleBRDFParams> SingleBRDFParams::table() {
    return kParams;
}

void MtlSingleBRDF::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    bsdfInterface = findInterface<BSDFInterface>(params.brdf);
    MessageLog* log = renderer.sequenceData.log;
    if (!bsdfInterface && log)
        log->warning("[MtlSingleBRDF] No BSDF parameter specified to material \"%s\"\n",
                     getPluginNameOr(""));
    warned = opaqueKnown = opaqueFlags = 0;
    filterActive = params.filter != Color(1) ? 1 : 0;
}

void MtlSingleBRDF::shade(PelkContext& context) {
    if (!params.brdf || !bsdfInterface)
        return setOpaqueBlack(context);
    if (isSeeThrough(context, params.doubleSided))
        return setFullyTransparent(context);
    const ScopedValue weight(context.rayWeight, context.rayWeight * params.filter);
    const ScopedValue weight2(context.rayWeight2, context.rayWeight2 * params.filter);
    shadeFiltered(context);
}

void MtlSingleBRDF::shadeFiltered(PelkContext& context) {
    const int flags = params.doubleSided == kBackSingle ? kSingleSided : 0;
    ScopedVolume volume(context);
    {
        const ScopedSampler sampler(context, *bsdfInterface, flags);
        if (!sampler.get())
            return setFullyTransparent(context);
        volume.show(*sampler.get());
        if (context.rayType & kRayShadow)
            setFilterResults(context, sampler.get()->getBSDFTransparency(context));
        else
            shadeLit(context, sampler.get());
    }
    // The sampler goes back first: its plug-in finds the volume as it was while it shaded.
    volume.keepIfTransparent();
}

void MtlSingleBRDF::shadeLit(PelkContext& context, BSDFSampler* sampler) {
    context.shadeWithBSDF(sampler, kAllIndirect);
    if (filterActive)
        context.resultColor *= params.filter;
    repairResultColor(context, *this, params.allowNegativeColors != 0, warned);
}

BSDFSampler* MtlSingleBRDF::getBSDF(PelkContext& context, int flags) {
    if (!bsdfInterface)
        return nullptr;
    if (params.doubleSided < kBackHidesCamera) {
        if (params.doubleSided == kBackSingle)
            flags |= kSingleSided;
        return takeSampler(*bsdfInterface, context, flags);
    }
    // Taken before the plug-in is asked: if there is no memory, no sampler of its own is lost.
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    element->bsdf = takeSampler(*bsdfInterface, context, flags);
    element->brdf = nullptr;
    element->doubleSided = params.doubleSided;
    return element.handOut();
}

void MtlSingleBRDF::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (params.doubleSided < kBackHidesCamera) {
        if (bsdfInterface)
            giveSampler(*bsdfInterface, context, sampler);
        return;
    }
    if (!sampler)
        return;
    // A plug-in that had no sampler for the hit gets its null back.
    if (bsdfInterface)
        giveSampler(*bsdfInterface, context, static_cast<BSDFBackFace*>(sampler)->bsdf);
    pool.giveBack(context, sampler);
}

int MtlSingleBRDF::getOpaqueFlags() {
    if (!readShared(opaqueKnown)) {
        writeShared(opaqueFlags, opaqueFlagsOf(params.brdf));
        writeShared(opaqueKnown, 1);
    }
    return readShared(opaqueFlags);
}

int MtlSingleBRDF::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                     ShaderSource& source, OCLData& data) {
    RTMtlInterface* child = findRTMtl(params.brdf);
    const bool isMaterial = isSection(kind, kMaterialSection);
    if (!child && !isMaterial)
        return 0;
    source.printf("double_sided %i\n", params.doubleSided);
    if (!child)
        source.append("diffuse\ncolor 0.5 0.5 0.5\n");
    const int answer = passThrough(child, {owner, sourceName, kind, source, data});
    return isMaterial ? 1 : answer;
}

BRDFSampler* BSDFBackFace::getBRDF(BSDFSide side) {
    brdf = bsdf ? bsdf->getBRDF(side) : nullptr;
    return brdf ? this : nullptr;
}

Color BSDFBackFace::getDiffuseColor(Color& lightColor) {
    return brdf->getDiffuseColor(lightColor);
}

Vector BSDFBackFace::getDiffuseNormal(PelkContext& context) {
    return brdf->getDiffuseNormal(context);
}

Color BSDFBackFace::getLightMult(Color& lightColor) {
    return brdf->getLightMult(lightColor);
}

Color BSDFBackFace::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                         Color& origLightColor, float probLight, int flags) {
    return brdf->eval(context, direction, lightColor, origLightColor, probLight, flags);
}

Color BSDFBackFace::getTransparency(PelkContext& context) {
    return isSeeThrough(context, doubleSided) ? Color(1) : brdf->getTransparency(context);
}
