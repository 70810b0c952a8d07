#pragma once

#include "pelk/contract/material.h"
#include "pelk/materials/maya/bump_brdf_sampler.h"

/// A bump or normal map in front of a material: the base shades with a normal that the map has
/// moved, and, for a height map with `bump_shadows`, at a point that the map has raised. Geometry
/// and silhouette stay, and so do the base's colours: the map changes how light falls, nothing
/// else. BumpForm tells what a map may hold.
///
/// The bump is computed once a hit, in getBSDF, and both ways of shading go through it: shade
/// shades with the sampler of getBSDF. Without a map, or with a height of 0, all calls go straight
/// to the base. Without a base the surface is opaque black.
class MtlBump final : public FramePooled<BumpBRDFSampler, WithParams<BumpParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "MtlBump";
    static constexpr u32 kID = 0x7782ACEA;

    using FramePooled::FramePooled;

    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    /// The base's: a bump lets no light through.
    int getOpaqueFlags() override;

    /// Tells only of a `map_type` that the scene has set: one that stands by default is written as
    /// neither a normal map nor a height map.
    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;
    RTMtlInterface* getMultiMtl() override;

private:
    bool hasMap() const { return params.colorTex || params.floatTex; }
    bool isOff() const;

    MaterialInterface* baseMaterial = nullptr;  // these two: set in frameBegin
    BSDFInterface* baseBSDF = nullptr;
};

using MtlBumpDesc = DescOf<MtlBump>;
