#pragma once

#include "pelk/contract/forwarding_sampler.h"
#include "pelk/contract/material.h"

/// Parameters of MtlOverride, as the host refreshes them at each frameBegin.
struct OverrideParams {
    PluginBase* baseMtl = nullptr;  ///< stands in where a ray has no material of its own
    int enableGiMtl = 1;            ///< this and the other three: 0 has its rays see the base
    PluginBase* giMtl = nullptr;    ///< seen by indirect diffuse rays
    int enableReflectMtl = 1;
    PluginBase* reflectMtl = nullptr;  ///< seen by reflected rays
    int enableRefractMtl = 1;
    PluginBase* refractMtl = nullptr;  ///< seen by refracted rays
    int enableShadowMtl = 1;
    PluginBase* shadowMtl = nullptr;  ///< asked by shadow rays, for transparency
    int useEnvironmentOverride = 0;
    /// What rays from here see that leave the scene.
    TextureInterface* environmentOverride = nullptr;
    int environmentPriority = 0;  ///< the highest along a path holds

    static ParamRows<OverrideParams> table();
};

/// The picked material's BSDF, with the environment of a MtlOverride for the rays that it traces.
/// Pooled and not constructed anew: MtlOverride::getBSDF writes every field.
class BSDFOverride : public ForwardingSampler {
public:
    TextureInterface* environment = nullptr;  ///< null for none
    int priority = 0;

    void traceBSDFForward(PelkContext& context, int doDiffuse) override;
    Color getBSDFTransparency(PelkContext& context) override;
    void traceForward(PelkContext& context, int doDiffuse) override;
    /// The new context keeps the environment.
    PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse) override;
};

/// Shows each kind of ray a material of its own, and gives the rays that leave from here another
/// environment: a lamp that lights the scene brighter than the camera sees it, a mirror image that
/// differs. What is seen and what lights then disagree, on purpose.
///
/// Of a ray that is of several kinds shadow counts before indirect diffuse, then reflected, then
/// refracted. Each kind falls back on the base alone, where its slot has no plug-in with a
/// BSDFInterface. Without a base the surface is fully transparent and has no sampler.
class MtlOverride final
    : public RenderPooled<BSDFOverride, WithParams<OverrideParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "MtlOverride";
    static constexpr u32 kID = 0x77A0B2A7;

    using RenderPooled::RenderPooled;

    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;
    RTMtlInterface* getMultiMtl() override;

private:
    enum SlotIndex { kBase, kGi, kReflect, kRefract, kShadow, kNumSlots };

    /// Interfaces of a slot's plug-in; null where it doesn't offer them, or the slot is empty or
    /// disabled.
    struct Slot {
        BSDFInterface* bsdf = nullptr;
        MaterialInterface* material = nullptr;
    };

    const Slot& pick(const PelkContext& context) const;

    Slot slots[kNumSlots];  // this and the environment: set in frameBegin
    TextureInterface* environment = nullptr;
    int environmentPriority = 0;
};

using MtlOverrideDesc = DescOf<MtlOverride>;
