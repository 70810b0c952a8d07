#pragma once

#include "pelk/contract/material.h"

/// Parameters of MtlDoubleSided, as the host refreshes them at each frameBegin.
struct DoubleSidedParams {
    PluginBase* baseMtl = nullptr;  ///< the one-sided material; null: the surface is black

    static ParamRows<DoubleSidedParams> table();
};

/// The base's BSDF on a surface that was turned over for it: all normals of the context negated and
/// its side swapped, so that a base which scatters on the front alone takes the back for its front.
/// A sampler reads the context again when it is used, so it is turned again for each use. Pooled
/// and not constructed anew: MtlDoubleSided::getBSDF writes every field.
class BackSideBSDF : public BRDFSampler, public BSDFSampler {
public:
    int flipped = 0;              ///< not 0 if the context was turned when the sampler was made
    BRDFSampler* brdf = nullptr;  ///< the BRDF of the side of `bsdf` that was asked for last
    BSDFSampler* bsdf = nullptr;  ///< the base's sampler, never null; goes back to it on release

    /// This sampler for each side that the base's sampler has.
    BRDFSampler* getBRDF(BSDFSide side) override;

    /// With the context as it was when the sampler was made.
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    /// With the context turned over, on front hits too: the GI of the host then gathers indirect
    /// light from the far side there. Whether that is wanted is the caller's choice of side.
    void traceForward(PelkContext& context, int doDiffuse) override;

    // These forward to `brdf` with the context as it is. All others keep the bodies of BRDFSampler.
    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    void multiplyLight(float factor) override;
    void lightFinished(int light) override;
    int getUseIrradianceMap() override;
    int getNumSamples(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
    PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse) override;
    float setupContext(PelkContext& context, PelkContext& newContext, float random,
                       int sample) override;
};

/// A one-sided material on both sides of a surface: a hit on the back is turned over, so that the
/// base sees the front. Without a base the surface is opaque black.
class MtlDoubleSided final
    : public FramePooled<BackSideBSDF, WithParams<DoubleSidedParams, PelkMaterial>> {
public:
    static constexpr const char* kName = "MtlDoubleSided";
    static constexpr u32 kID = 0x7782FC69;

    using FramePooled::FramePooled;

    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;

private:
    MaterialInterface* baseMaterial = nullptr;  // these two: set in frameBegin
    BSDFInterface* baseBSDF = nullptr;
};

using MtlDoubleSidedDesc = DescOf<MtlDoubleSided>;
