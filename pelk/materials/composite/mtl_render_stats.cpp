#include "pelk/materials/composite/mtl_render_stats.h"

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

using P = RenderStatsParams;

constexpr ParamTable kParams{
    pluginParam("base_mtl", &P::baseMtl, "Base material"),
    boolParam("camera_visibility", &P::cameraVisibility, true,
              "Whether the object is visible from the camera (camera rays)"),
    boolParam("reflections_visibility", &P::reflectionsVisibility, true,
              "Whether the object is visible in reflections"),
    boolParam("refractions_visibility", &P::refractionsVisibility, true,
              "Whether the object is visible in refractions"),
    boolParam("gi_visibility", &P::giVisibility, true,
              "Whether the object is visible to GI (generating and receiving)"),
    boolParam("shadows_visibility", &P::shadowsVisibility, true,
              "Whether the object casts shadows (visible to lights for shadow rays)"),
    boolParam("shadows_receive", &P::shadowsReceive, true, "Whether the object receives shadows"),
    floatParam("visibility", &P::visibility, 1.0f, "Overall visibility"),
};

/// Below and from these on a visibility counts as 0 and as 1.
constexpr float kHiddenBelow = 1e-6f;
constexpr float kFullFrom = 0.999999f;

bool hasAll(u32 rayType, u32 bits) {
    return (rayType & bits) == bits;
}

/// Mixes the results with a clear surface by the share that is visible.
void fade(PelkContext& context, float visible) {
    context.resultColor *= visible;
    context.resultTransparency *= visible;
    context.resultAlpha *= visible;
    context.resultAlphaTransparency *= visible;
    if (Fragment* fragment = context.resultFragment)
        fragment->multiply(Color(visible), 1);
    const Color clear(1.0f - visible);
    context.resultTransparency += clear;
    context.resultAlphaTransparency += clear;
}

}  // namespace

ParamRows<RenderStatsParams> RenderStatsParams::table() {
    return kParams;
}

void MtlRenderStats::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    baseMaterial = findInterface<MaterialInterface>(params.baseMtl);
    baseBSDF = findInterface<BSDFInterface>(params.baseMtl);
}

/// Diffuse scattering on the way outweighs reflection and refraction: such rays are governed by
/// giVisibility alone.
float MtlRenderStats::visibilityTo(const PelkContext& context) const {
    const u32 type = context.rayType;
    const bool isPrimary = context.traceDepth == 0;
    if (!params.cameraVisibility && (type & kRayCamera) && isPrimary)
        return 0.0f;
    if (type & kRayShadow)
        return !params.shadowsVisibility && context.traceDepth > 0 ? 0.0f : params.visibility;
    const bool isGi = type & kRayGi;
    const bool isHidden =
        (!params.reflectionsVisibility && !isGi && hasAll(type, kRayCamera | kRayReflect)) ||
        (!params.refractionsVisibility && !isGi && hasAll(type, kRayCamera | kRayRefract)) ||
        (!params.giVisibility && hasAll(type, kRayCamera | kRayGi));
    return isHidden ? 0.0f : params.visibility;
}

void MtlRenderStats::shade(PelkContext& context) {
    const float visible = visibilityTo(context);
    if (visible < kHiddenBelow)
        return setFullyTransparent(context);
    if (baseMaterial)
        shadeBase(context, visible);
    else
        setOpaqueBlack(context);
    if (!(visible >= kFullFrom))
        fade(context, visible);
}

void MtlRenderStats::shadeBase(PelkContext& context, float visible) {
    const ScopedValue weight(context.rayWeight, context.rayWeight * visible);
    if (params.shadowsReceive)
        return callShade(*baseMaterial, context);
    const ScopedValue flags(context.shadeFlags, context.shadeFlags | kShadeNoShadows);
    callShade(*baseMaterial, context);
}

BSDFSampler* MtlRenderStats::getBSDF(PelkContext& context, int flags) {
    if (visibilityTo(context) < kHiddenBelow)
        return &transparent;
    return baseBSDF ? takeSampler(*baseBSDF, context, flags) : nullptr;
}

void MtlRenderStats::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (baseBSDF && sampler != &transparent)
        giveSampler(*baseBSDF, context, sampler);
}

int MtlRenderStats::getMaterialID(PelkContext& context) {
    return baseMaterial ? baseMaterial->getMaterialID(context) : 0;
}

int MtlRenderStats::getOpaqueFlags() {
    return params.shadowsVisibility ? opaqueFlagsOf(params.baseMtl) & kOpaqueToShadows : 0;
}

int MtlRenderStats::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                      ShaderSource& source, OCLData& data) {
    if (isSection(kind, kMaterialSection)) {
        source.printf("visible_to_camera %i\n", params.cameraVisibility);
        source.printf("visible_to_reflections %i\n", params.reflectionsVisibility);
        source.printf("visible_to_refractions %i\n", params.refractionsVisibility);
        source.printf("visible_to_gi %i\n", params.giVisibility);
        source.printf("visible_to_shadows %i\n", params.shadowsVisibility);
        source.printf("overall_visibility %f\n", params.visibility);
    }
    return passThrough(findRTMtl(params.baseMtl), {owner, sourceName, kind, source, data});
}

RTMtlInterface* MtlRenderStats::getMultiMtl() {
    return findMultiMtl(params.baseMtl);
}

BRDFSampler* TransparentBSDF::getBRDF(BSDFSide) {
    return this;
}

void TransparentBSDF::traceBSDFForward(PelkContext& context, int) {
    setFullyTransparent(context);
}

Color TransparentBSDF::getBSDFTransparency(PelkContext&) {
    return Color(1);
}

Color TransparentBSDF::getDiffuseColor(Color&) {
    return Color(0);
}

Color TransparentBSDF::getLightMult(Color&) {
    return Color(0);
}

Color TransparentBSDF::eval(PelkContext&, const Vector&, Color&, Color&, float, int) {
    return Color(0);
}

void TransparentBSDF::traceForward(PelkContext& context, int) {
    setFullyTransparent(context);
}

Color TransparentBSDF::getTransparency(PelkContext&) {
    return Color(1);
}
