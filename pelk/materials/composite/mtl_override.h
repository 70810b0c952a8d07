#pragma once

#include "pelk/contract/forwarding_sampler.h"
#include "pelk/contract/material.h"

/// Parameters of MtlOverride, as the host refreshes them at each frameBegin.
struct OverrideParams {
    PluginBase* baseMtl = nullptr;  ///< stands in where a ray has no material of its own
    int enableGiMtl = 1;
    PluginBase* giMtl = nullptr;  ///< for indirect diffuse light
    int enableReflectMtl = 1;
    PluginBase* reflectMtl = nullptr;
    int enableRefractMtl = 1;
    PluginBase* refractMtl = nullptr;
    int enableShadowMtl = 1;
    PluginBase* shadowMtl = nullptr;
    int useEnvironmentOverride = 0;
    TextureInterface* environmentOverride = nullptr;  ///< environment of what is traced from here
    int environmentPriority = 0;                      ///< the highest along a path holds

    static ParamRows<OverrideParams> table();
};

/// The picked material's sampler, with the environment of a MtlOverride around what it traces.
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

/// Shows each kind of ray a material of its own, and what is traced from there another environment.
///
/// Shadow rays come before indirect ones, then reflected, then refracted ones; each falls back on
/// the base alone. Which material there is goes by its BSDF face. Without a base the surface is
/// fully transparent and has no sampler.
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

    /// Faces of a slot's plug-in; null where it lacks them, or the slot is empty or disabled.
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
