#pragma once

#include "pelk/contract/forwarding_sampler.h"
#include "pelk/contract/material.h"

/// Parameters of MtlMaterialID, as the host refreshes them at each frameBegin.
struct MaterialIDParams {
    PluginBase* baseMtl = nullptr;        ///< what shades
    TextureInterface* idColor = nullptr;  ///< colour of the id channel; its alpha is not used
    int idNumber = 0;                     ///< number of the id channel

    static ParamRows<MaterialIDParams> table();
};

/// The base's BSDF, which writes the ids into the hit's channels once it has traced. Pooled and not
/// constructed anew: MtlMaterialID::getBSDF writes every field.
class MaterialIDBSDF : public ForwardingSampler {
public:
    TextureInterface* idColor = nullptr;
    int idNumber = 0;

    void traceForward(PelkContext& context, int doDiffuse) override;
};

/// Writes a colour and a number into the id channels (mattes for compositing) at all hits of the
/// base.
///
/// Radiance and BSDF are the base's; without a base the results stay as they are, and the channels
/// are written all the same. Shadow rays write none: what they meet is not in the pixel.
class MtlMaterialID final
    : public RenderPooled<MaterialIDBSDF, WithParams<MaterialIDParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "MtlMaterialID";
    static constexpr u32 kID = 0x77B41398;

    using RenderPooled::RenderPooled;

    void frameBegin(PelkRenderer& renderer) override;
    void frameEnd(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    /// The number, whatever the base would answer.
    int getMaterialID(PelkContext& context) override;
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;
    RTMtlInterface* getMultiMtl() override;

private:
    MaterialInterface* baseMaterial = nullptr;  // these two: set in frameBegin
    BSDFInterface* baseBSDF = nullptr;
};

using MtlMaterialIDDesc = DescOf<MtlMaterialID>;
