#include "pelk/materials/maya/mtl_bump.h"

#include <cmath>

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

/// Below this a height map shows nothing, whatever is in it.
constexpr float kNoHeight = 1e-12f;

using P = BumpParams;

constexpr ParamTable kParams{
    pluginParam<MaterialInterface>("base_mtl", &P::baseMtl, "Base material"),
    textureParam("bump_tex_color", &P::colorTex, "Bump texture"),
    textureFloatParam("bump_tex_float", &P::floatTex, "Bump texture"),
    floatParam("bump_tex_mult", &P::bumpMult, 1.0f, "Bump amount"),
    textureFloatParam("bump_tex_mult_tex", &P::multTex, "Bump amount texture"),
    pluginParam("bump_tex", &P::bumpTexPlugin,
                "Bump texture; this is deprecated, use bump_tex_color or bump_tex_float instead"),
    boolParam("bump_shadows", &P::bumpShadows, false,
              "true to offset the surface shading point, in addition to the normal"),
    floatParam("bump_delta_scale", &P::deltaScale, 1.0f,
               "Scale for sampling the bitmap when map_type is 0. Normally this is tied to the ray "
               "differentials, but can be changed if necessary."),
    boolParam("maya_compatible", &P::mayaCompatible, false,
              "When this is true the BRDFBump will try to match the Maya bump/normal mapping"),
    intParam("map_type", &P::mapType, kBumpHeight,
             "The type of the map (0 - from regular texture output, 1 - normal map in tangent "
             "space, 2 - normal map in object space, 3 - normal map in camera space, 4 - normal "
             "map in world space, 5 - from texture bump output, 6 - explicit normal)",
             "enum=(0:Regular texture output;1:Normal map in tangent space;2:Normal map in object "
             "space;3:Normal map in camera space;4:Normal map in world space;5:From texture bump "
             "output;6:Explicit normal)"),
    pluginParam<UVWGenInterface>("normal_uvwgen", &P::normalUvwgen,
                                 "The uvw generator for the normal map texture when map_type is "
                                 "1."),
    boolParam("compute_bump_for_shadows", &P::bumpForShadows, true,
              "true to compute bump mapping for shadow rays in case the material is transparent; "
              "false to skip the bump map for shadow rays (faster rendering)"),
};

/// The lines of the map and of the base, in the section of materials. `mapType`: as the scene sets
/// it, -1 if it doesn't.
void writeMap(const BumpParams& params, int mapType, Plugin& plugin, const SourceArgs& args) {
    ShaderSource map;
    RTTexInterface::getRTTexSource(params.colorTex, "color", args.name, args.kind, map, args.data);
    RTTexInterface::getRTTexSource(params.floatTex, "float", args.name, args.kind, map, args.data);
    map.oclCheckBumpTextureSupport(args.data.renderer, plugin.getPluginName(),
                                   plugin.getPluginTypeName(), mapType != kBumpHeight ? 1 : 0);
    args.source.append(map);
    if (mapType == kBumpTangentSpace)
        args.source.append("bumpIsNormalMap\n");
    else if (mapType == kBumpHeight)
        args.source.append("bumpMaya\n");
}

}  // namespace

ParamRows<BumpParams> BumpParams::table() {
    return kParams;
}

void MtlBump::frameBegin(PelkRenderer& renderer) {
    FramePooled::frameBegin(renderer);
    baseMaterial = findInterface<MaterialInterface>(params.baseMtl);
    baseBSDF = findInterface<BSDFInterface>(params.baseMtl);
    if (params.bumpTexPlugin) {
        params.colorTex = findInterface<TextureInterface>(params.bumpTexPlugin);
        params.floatTex = findInterface<TextureFloatInterface>(params.bumpTexPlugin);
    }
}

void MtlBump::shade(PelkContext& context) {
    if (!baseMaterial)
        return setOpaqueBlack(context);
    // Other than getBSDF: without strength the base shades whole, whatever the form of the map.
    if (!hasMap() || !(std::fabs(params.bumpMult) >= kNoHeight))
        return callShade(*baseMaterial, context);
    const ScopedSampler sampler(context, *this, 0);
    if (!sampler.get())
        return setFullyTransparent(context);
    shadeBSDF(context, sampler.get());
}

bool MtlBump::isOff() const {
    const bool isScaled = params.mapType == kBumpHeight || params.mapType == kBumpOfTexture;
    return !hasMap() || (isScaled && std::fabs(params.bumpMult) < kNoHeight);
}

BSDFSampler* MtlBump::getBSDF(PelkContext& context, int flags) {
    if (!baseBSDF)
        return nullptr;
    if (isOff())
        return takeSampler(*baseBSDF, context, flags);
    // Taken before the base is asked: if there is no memory, no sampler of the base is lost.
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    const bool hasBump = computeBump(params, context, element->bump, element->offset);
    element->mode = hasBump ? params.mapType : int{kBumpNone};
    element->createdBackSide = context.backSide;
    element->brdf = nullptr;
    {
        const ScopedValue normal(context.normal, applyBump(context.normal, element->mode,
                                                           element->bump, context.flippedSide));
        const ScopedValue hitPoint(context.hitPoint, element->mode == kBumpHeight
                                                         ? context.hitPoint + element->offset
                                                         : context.hitPoint);
        element->bsdf = takeSampler(*baseBSDF, context, flags);
    }
    return element->bsdf ? element.handOut() : nullptr;
}

void MtlBump::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler || !baseBSDF)
        return;
    // By the same test as getBSDF, as the fields hold for the frame: the sampler is the base's own.
    if (isOff())
        return giveSampler(*baseBSDF, context, sampler);
    auto* element = static_cast<PoolElement<BumpBRDFSampler>*>(sampler);
    giveSampler(*baseBSDF, context, element->bsdf);
    pool.giveBack(context, element);
}

int MtlBump::getOpaqueFlags() {
    return opaqueFlagsOf(params.baseMtl);
}

int MtlBump::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                               ShaderSource& source, OCLData& data) {
    const SourceArgs args{owner, sourceName, kind, source, data};
    RTMtlInterface* const base = findRTMtl(params.baseMtl);
    if (!base || !hasMap())
        return passThrough(base, args);
    if (isSection(kind, kHierarchySection)) {
        writeChildren(std::span(&base, 1), args);
        return 1;
    }
    if (!isSection(kind, kMaterialSection))
        return 0;
    PelkPluginParameter* const mapType = paramList.getParam("map_type");
    source.printf("dbgmtlname \"%s\"\n", getPluginNameOr(""));
    source.append("bump\n");
    source.printf("bitmap_mult %f\n", params.bumpMult);
    writeMap(params, mapType ? mapType->getInt(0, 0.0) : -1, *this, args);
    source.append("bump\n");
    if (params.multTex) {
        source.append("bump_amount\n");
        RTTexInterface::getRTTexSource(params.multTex, "float", sourceName, kind, source, data);
    }
    writeBlock(source, [&] { passThrough(base, args); });
    return 1;
}

RTMtlInterface* MtlBump::getMultiMtl() {
    return findMultiMtl(params.baseMtl);
}
