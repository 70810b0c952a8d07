#include "pelk/materials/composite/mtl_override.h"

#include <array>
#include <limits>

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"

namespace {

using P = OverrideParams;

constexpr ParamTable kParams{
    pluginParam<MaterialInterface>(
        "base_mtl", &P::baseMtl, "The normal material (visible to the camera)",
        "startTab=(Pelk Override Material), startRollout=(Material override), "
        "displayName=(Base Material)"),
    boolParam("enable_gi_mtl", &P::enableGiMtl, true, "Enable the GI material.",
              "startRollout=(), displayName=(Enable GI Material)"),
    pluginParam<MaterialInterface>("gi_mtl", &P::giMtl, "The GI material.",
                                   "displayName=(GI Material), enable=(::enable_gi_mtl=1)"),
    boolParam("enable_reflect_mtl", &P::enableReflectMtl, true, "Enable the reflection material.",
              "startRollout=(), displayName=(Enable Reflection Material)"),
    pluginParam<MaterialInterface>(
        "reflect_mtl", &P::reflectMtl, "The reflection material.",
        "displayName=(Reflection Material), enable=(::enable_reflect_mtl=1)"),
    boolParam("enable_refract_mtl", &P::enableRefractMtl, true, "Enable the refraction material.",
              "startRollout=(), displayName=(Enable Refraction Material)"),
    pluginParam<MaterialInterface>(
        "refract_mtl", &P::refractMtl, "The refraction material.",
        "displayName=(Refraction Material), enable=(::enable_refract_mtl=1)"),
    boolParam("enable_shadow_mtl", &P::enableShadowMtl, true, "Enable the shadow material.",
              "startRollout=(), displayName=(Enable Shadow Material)"),
    pluginParam<MaterialInterface>("shadow_mtl", &P::shadowMtl, "The shadow material.",
                                   "displayName=(Shadow Material), enable=(::enable_shadow_mtl=1)"),
    boolParam("use_environment_override", &P::useEnvironmentOverride, false,
              "True to use the 'environment override' texture.",
              "startRollout=(Environment override)"),
    textureParam("environment_override", &P::environmentOverride, "Environment override texture",
                 "enable=(::use_environment_override=1)"),
    intParam("environment_priority", &P::environmentPriority, 0,
             "Environment override priority (used when several materials override it along a ray "
             "path)",
             "enable=(::use_environment_override=1), minValue=(-1000), maxValue=(1000)"),
};

/// What an override without a texture is set with: below all others.
constexpr int kNoPriority = std::numeric_limits<int>::min();

/// The slots in their order: base, GI, reflection, refraction, shadow.
std::array<LayerPosition, 5> slotsOf(const OverrideParams& params) {
    return {{{params.baseMtl, true},
             {params.giMtl, params.enableGiMtl != 0},
             {params.reflectMtl, params.enableReflectMtl != 0},
             {params.refractMtl, params.enableRefractMtl != 0},
             {params.shadowMtl, params.enableShadowMtl != 0}}};
}

/// Overrides the environment of a context, and puts the old one back when the scope ends.
class ScopedEnvironment {
public:
    ScopedEnvironment(PelkContext& context, TextureInterface* texture, int priority)
        : oldTexture(context.environment, context.environment),
          oldPriority(context.environmentPriority, context.environmentPriority) {
        context.setEnvironment(texture, priority, 1);
    }

private:
    const ScopedValue<TextureInterface*> oldTexture;
    const ScopedValue<int> oldPriority;
};

}  // namespace

ParamRows<OverrideParams> OverrideParams::table() {
    return kParams;
}

void MtlOverride::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    const auto positions = slotsOf(params);
    for (int i = 0; i < kNumSlots; ++i) {
        PluginBase* plugin = positions[i].enabled ? positions[i].plugin : nullptr;
        slots[i].bsdf = findInterface<BSDFInterface>(plugin);
        slots[i].material = findInterface<MaterialInterface>(plugin);
    }
    environment = params.useEnvironmentOverride ? params.environmentOverride : nullptr;
    environmentPriority = environment ? params.environmentPriority : kNoPriority;
}

/// By ray type and GI depth alone, so that a sampler goes back to the plug-in that it came from.
const MtlOverride::Slot& MtlOverride::pick(const PelkContext& context) const {
    const u32 type = context.rayType;
    if ((type & kRayShadow) && slots[kShadow].bsdf)
        return slots[kShadow];
    SlotIndex slot = kBase;
    if ((type & kRayGiLike) || context.giDepth > 0)
        slot = kGi;
    else if (type & kRayReflect)
        slot = kReflect;
    else if (type & kRayRefract)
        slot = kRefract;
    return slots[slot].bsdf ? slots[slot] : slots[kBase];
}

void MtlOverride::shade(PelkContext& context) {
    const ScopedEnvironment scope(context, environment, environmentPriority);
    if (MaterialInterface* material = pick(context).material)
        callShade(*material, context);
    else
        setFullyTransparent(context);
}

BSDFSampler* MtlOverride::getBSDF(PelkContext& context, int flags) {
    BSDFInterface* picked = pick(context).bsdf;
    if (!picked)
        return nullptr;
    // Taken before the material is asked: if there is no memory, no sampler of its own is lost.
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    element->bsdf = takeSampler(*picked, context, flags);
    element->environment = environment;
    element->priority = environmentPriority;
    element->brdf = nullptr;
    return element->bsdf ? element.handOut() : nullptr;
}

void MtlOverride::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler)
        return;
    auto* element = static_cast<PoolElement<BSDFOverride>*>(sampler);
    giveSampler(*pick(context).bsdf, context, element->bsdf);
    pool.giveBack(context, element);
}

int MtlOverride::getOpaqueFlags() {
    int all = ~0, any = 0;
    for (PluginBase* plugin :
         {params.baseMtl, params.giMtl, params.reflectMtl, params.refractMtl}) {
        const int flags = opaqueFlagsOf(plugin);
        all &= flags;
        any |= flags;
    }
    const Slot& shadow = slots[kShadow];
    if (shadow.material || shadow.bsdf)
        all = opaqueFlagsOf(params.shadowMtl);
    return (all & kOpaqueToShadows) | (any & kOpaqueTwoSided);
}

int MtlOverride::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                   ShaderSource& source, OCLData& data) {
    if (!isSection(kind, kMaterialSection))
        return 0;
    ShaderSource layers;
    int offsets[kNumSlots];
    writeBlocksWithOffsets(slotsOf(params), SamePlugin::Shared,
                           {owner, sourceName, kind, source, data}, layers, offsets);
    source.append("override_mtl\n");
    source.printf("override_sub_mtls_offsets %i,%i,%i,%i,%i\n", offsets[0], offsets[1], offsets[2],
                  offsets[3], offsets[4]);
    source.append(layers);
    return 1;
}

RTMtlInterface* MtlOverride::getMultiMtl() {
    return findMultiMtl(params.baseMtl);
}

void BSDFOverride::traceBSDFForward(PelkContext& context, int doDiffuse) {
    const ScopedEnvironment scope(context, environment, priority);
    bsdf->traceBSDFForward(context, doDiffuse);
}

Color BSDFOverride::getBSDFTransparency(PelkContext& context) {
    return bsdf->getBSDFTransparency(context);
}

void BSDFOverride::traceForward(PelkContext& context, int doDiffuse) {
    const ScopedEnvironment scope(context, environment, priority);
    ForwardingSampler::traceForward(context, doDiffuse);
}

PelkContext* BSDFOverride::getNewContext(PelkContext& context, int& sampler, int doDiffuse) {
    PelkContext* ray = ForwardingSampler::getNewContext(context, sampler, doDiffuse);
    if (ray)
        ray->setEnvironment(environment, priority, 1);
    return ray;
}
