#pragma once

#include "pelk/contract/material.h"
#include "pelk/contract/two_sided_bsdf.h"

/// Parameters of Mtl2Sided, as the host refreshes them at each frameBegin.
struct TwoSidedParams {
    PluginBase* front = nullptr;  ///< material of the side to which the normal points
    PluginBase* back = nullptr;   ///< of the other side; that of the front if it is not set
    Color translucency;  ///< share of the far side's diffuse light that shows on the near side
    TextureInterface* translucencyTex = nullptr;  ///< over `translucency`, by its alpha
    float translucencyTexMult = 1.0f;  ///< scales the texture; below 1e-12 or NaN it is not read
    int force1Sided = 1;               ///< not 0: both materials are asked for single-sided BSDFs
    int multByFrontDiffuse = 0;  ///< not 0: translucent light is dyed by the near side's albedo
    PelkPluginList channels;     ///< render channels of the result

    static ParamRows<TwoSidedParams> table();
};

/// The BSDFs of both sides at one hit, mixed by translucency. Pooled and not constructed anew:
/// Mtl2Sided::getBSDF writes `side`, TwoSidedBSDF::init all else.
class Mtl2SidedBSDF : public TwoSidedBSDF {
public:
    int side = 0;  ///< whose sampler is the first, that of the viewer's side: 0 front, 1 back
};

/// A sheet, such as paper or a leaf: a material on each side, and between them diffuse transmission
/// (translucency) without thickness or refraction.
///
/// Each material makes its BSDF with the context turned so that its own side counts as the front;
/// TwoSidedBSDF mixes the two. shade() goes the same way, so that a parent may use either. Outside
/// a frame the surface is fully transparent.
class Mtl2Sided final
    : public FramePooled<Mtl2SidedBSDF, WithParams<TwoSidedParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "Mtl2Sided";
    static constexpr u32 kID = 0x779347CD;

    using FramePooled::FramePooled;

    void renderBegin(PelkRenderer& renderer) override;
    void renderEnd(PelkRenderer& renderer) override;
    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    /// Bit 1 always; bit 0 only if both materials have it.
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;

private:
    BSDFSampler* getSampler(PelkContext& context, int side, bool isBeyond, int flags) const;
    void releaseSampler(PelkContext& context, int side, BSDFSampler* sampler) const;

    GrowTable<int> channelIndices{100};     // lives from renderBegin to renderEnd
    BSDFInterface* bsdfInterfaces[2] = {};  // by side: 0 front, 1 back; set in frameBegin
};

using Mtl2SidedDesc = DescOf<Mtl2Sided>;
