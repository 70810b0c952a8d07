#include "pelk/materials/composite/mtl_2sided.h"

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

using P = TwoSidedParams;

constexpr ParamTable kParams{
    pluginParam<MaterialInterface>("front", &P::front,
                                   "The material for the surface on the same side as the normal.",
                                   "startTab=(Pelk 2-Sided Material), startRollout=(Parameters)"),
    pluginParam<MaterialInterface>(
        "back", &P::back, "The material for the side that is opposite the surface normal."),
    colorParam("translucency", &P::translucency, Color(0), "Translucency between front and back."),
    textureParam("translucency_tex", &P::translucencyTex, "Translucency texture.",
                 "displayName=(Translucency texture)"),
    floatParam("translucency_tex_mult", &P::translucencyTexMult, 1.0f,
               "Multiplier for the translucency texture.",
               "displayName=(Translucency texture multiplier), minValue=(0.0), maxValue=(1.0)"),
    boolParam("force_1sided", &P::force1Sided, true, "True to make the sub-materials one-sided.",
              "displayName=(Force single-sided sub-materials)"),
    boolParam("mult_by_front_diffuse", &P::multByFrontDiffuse, false,
              "True to multiply the back side color by the cached diffuse color of the front "
              "BRDF.",
              "displayName=(Multiply by front diffuse)"),
    pluginListParam<RenderChannelInterface>(
        "channels", &P::channels, "Render channels the result of this BRDF will be written to."),
};

void writeTranslucency(const TwoSidedParams& params, const SourceArgs& args) {
    TextureInterface* texture = params.translucencyTex;
    if (texture && findInterface<RTTexInterface>(texture->getPlugin())) {
        args.source.append("weight_map\n");
        RTTexInterface::getRTTexSource(texture, "color", "", args.kind, args.source, args.data);
        return;
    }
    const Color t = params.translucency;
    args.source.printf("weight_map\ncolor %f %f %f\n", t.r, t.g, t.b);
}

void writeLayers(const TwoSidedParams& params, const SourceArgs& args) {
    if (RTMtlInterface* front = findRTMtl(params.front))
        writeBlock(args.source, [&] {
            writeTranslucency(params, args);
            passThrough(front, args);
        });
    if (RTMtlInterface* back = findRTMtl(params.back))
        writeBlock(args.source, [&] {
            args.source.append("weight_map\ncolor 1.0 1.0 1.0\n");
            passThrough(back, args);
        });
}

}  // namespace

ParamRows<TwoSidedParams> TwoSidedParams::table() {
    return kParams;
}

void Mtl2Sided::renderBegin(PelkRenderer&) {
    paramList.cacheParams(0.0, TracePoint());  // the channels are wanted before the first frame
    listChannelIndices(params.channels, channelIndices);
}

void Mtl2Sided::renderEnd(PelkRenderer&) {
    channelIndices.free();
    params.channels.count = 0;
}

void Mtl2Sided::frameBegin(PelkRenderer& renderer) {
    FramePooled::frameBegin(renderer);
    if (!params.back)
        params.back = params.front;
    bsdfInterfaces[0] = findInterface<BSDFInterface>(params.front);
    bsdfInterfaces[1] = findInterface<BSDFInterface>(params.back);
}

void Mtl2Sided::shade(PelkContext& context) {
    const ScopedSampler sampler(context, *this, params.force1Sided ? kSingleSided : 0);
    if (!sampler.get())
        return setFullyTransparent(context);
    shadeBSDF(context, sampler.get());
}

BSDFSampler* Mtl2Sided::getBSDF(PelkContext& context, int flags) {
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    const int side = element->side = context.backSide ? 1 : 0;
    if (params.force1Sided)
        flags |= kSingleSided;
    // Whatever throws for memory from here on, both samplers go back to where they came from, with
    // the context as it was.
    ScopedSampler near(context, bsdfInterfaces[side], getSampler(context, side, false, flags));
    ScopedSampler beyond(context, bsdfInterfaces[1 - side],
                         getSampler(context, 1 - side, true, flags));
    // A weight that is no number shows no texture.
    const float weight = params.translucencyTexMult;
    const Color translucency = textureBlend(
        context, params.translucency, weight >= 1e-12f ? params.translucencyTex : nullptr, weight);
    element->init(context, translucency, near.get(), beyond.get(), params.multByFrontDiffuse,
                  Color(0));
    near.handOut();
    beyond.handOut();
    return element.handOut();
}

BSDFSampler* Mtl2Sided::getSampler(PelkContext& context, int side, bool isBeyond, int flags) const {
    BSDFInterface* bsdf = bsdfInterfaces[side];
    if (!bsdf)
        return nullptr;
    // Each material sees its side as the front of a surface that has not been turned over.
    const ScopedFlip toViewer(context, context.backSide && !context.flippedSide);
    const ScopedFlip toFarSide(context, isBeyond);
    const ScopedValue flippedSide(context.flippedSide, 0);
    return takeSampler(*bsdf, context, flags);
}

void Mtl2Sided::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler)
        return;
    auto* element = static_cast<PoolElement<Mtl2SidedBSDF>*>(sampler);
    releaseSampler(context, element->side, element->getFirst());
    releaseSampler(context, 1 - element->side, element->getSecond());
    pool.giveBack(context, element);
}

/// A material that gave no sampler gets the null back.
void Mtl2Sided::releaseSampler(PelkContext& context, int side, BSDFSampler* sampler) const {
    if (BSDFInterface* bsdf = bsdfInterfaces[side])
        giveSampler(*bsdf, context, sampler);
}

int Mtl2Sided::getOpaqueFlags() {
    return kOpaqueTwoSided |
           (opaqueFlagsOf(params.front) & opaqueFlagsOf(params.back) & kOpaqueToShadows);
}

int Mtl2Sided::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                 ShaderSource& source, OCLData& data) {
    const SourceArgs args{owner, sourceName, kind, source, data};
    if (isSection(kind, kHierarchySection)) {
        RTMtlInterface* const children[] = {findRTMtl(params.front), findRTMtl(params.back)};
        writeChildren(children, args);
        return 1;
    }
    if (!isSection(kind, kMaterialSection))
        return 0;
    source.printf("dbgmtlname \"%s\"\n", getPluginNameOr(""));
    source.append("two_sided\n");
    writeLayers(params, args);
    return 1;
}
