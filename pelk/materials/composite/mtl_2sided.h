#pragma once

#include "pelk/contract/material.h"
#include "pelk/contract/two_sided_bsdf.h"

/// Parameters of Mtl2Sided, as the host refreshes them at each frameBegin.
struct TwoSidedParams {
    PluginBase* front = nullptr;  ///< material of the side to which the normal points
    PluginBase* back = nullptr;   ///< of the other side; that of the front if it is not set
    Color translucency;           ///< share of light from one side that shows on the other
    TextureInterface* translucencyTex = nullptr;  ///< blended over `translucency`
    float translucencyTexMult = 1.0f;             ///< weight of the texture
    int force1Sided = 1;         ///< the materials are told that they have one side
    int multByFrontDiffuse = 0;  ///< light from beyond takes the diffuse colour of the near side
    PelkPluginList channels;     ///< render channels of the result

    static ParamRows<TwoSidedParams> table();
};

/// The two sides at one hit. Pooled and not constructed anew: Mtl2Sided::getBSDF writes `side`,
/// init all else.
class Mtl2SidedBSDF : public TwoSidedBSDF {
public:
    int side = 0;  ///< which material has the first sampler: 0 the front's, 1 the back's
};

/// A thin surface with a material on each side and translucency between them.
///
/// Each material makes its sampler with the context turned so that the side that was hit counts as
/// its front; TwoSidedBSDF mixes them. Outside a frame the surface is fully transparent.
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
