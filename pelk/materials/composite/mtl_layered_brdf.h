#pragma once

#include "pelk/contract/layered_bsdf.h"
#include "pelk/contract/material.h"

/// Parameters of MtlLayeredBRDF, as the host refreshes them at each frameBegin.
struct LayeredBRDFParams {
    PelkPluginList brdfs;  ///< the BSDF plug-ins, the outermost layer first; entries may be null
    int doubleSided = 1;   ///< 0: they are asked for single-sided BSDFs

    static ParamRows<LayeredBRDFParams> table();
};

/// Layers of BSDF plug-ins as a whole surface, such as varnish on paint on primer.
///
/// Light meets them from the outermost in: each layer reflects its share and passes the rest of the
/// throughput on, without bounces between layers (LayeredBSDF). A position without a BSDF plug-in
/// is a clear layer; without any position the surface is opaque black. Radiance that no light can
/// have (NaN, infinite, negative) is repaired and reported once a frame.
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
