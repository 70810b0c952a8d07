#pragma once

#include "pelk/contract/layered_bsdf.h"
#include "pelk/contract/material.h"

/// Parameters of MtlLayeredBRDF, as the host refreshes them at each frameBegin.
struct LayeredBRDFParams {
    PelkPluginList brdfs;  ///< the plug-ins that scatter, the outermost first
    int doubleSided = 1;   ///< 0: the plug-ins are told that the surface has one side

    static ParamRows<LayeredBRDFParams> table();
};

/// BSDF plug-ins on top of each other as a whole surface.
///
/// Each layer takes its share of the light and leaves the rest to those below. A position without
/// a plug-in that scatters is a clear layer; without any position the surface is opaque black.
/// Colours that no light can have are repaired.
class MtlLayeredBRDF final
    : public FramePooled<LayeredBSDF, WithParams<LayeredBRDFParams, PelkMaterial>> {
public:
    static constexpr const char* kName = "MtlLayeredBRDF";
    static constexpr u32 kID = 0x77742BF2;

    using FramePooled::FramePooled;

    void frameBegin(PelkRenderer& renderer) override;
    void frameEnd(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;

private:
    void shadeLayers(PelkContext& context, BSDFSampler* sampler) const;
    void fillLayers(PelkContext& context, int flags, LayeredBSDF& layers);
    void releaseLayers(PelkContext& context, LayeredBSDF& layers) const;

    GrowTable<BSDFInterface*> bsdfInterfaces;  // by position, null where there is none; per frame
    int warned = 0;                            // shared by the render threads, reset in frameBegin
};

using MtlLayeredBRDFDesc = DescOf<MtlLayeredBRDF>;
