#pragma once

#include "pelk/contract/material.h"

/// Parameters of MtlDoubleSided, as the host refreshes them at each frameBegin.
struct DoubleSidedParams {
    PluginBase* baseMtl = nullptr;  ///< the one-sided material

    static ParamRows<DoubleSidedParams> table();
};

/// The base's sampler, made with the context turned over, and turned over again where it looks at
/// the context. Pooled and not constructed anew: MtlDoubleSided::getBSDF writes every field.
class BackSideBSDF : public BRDFSampler, public BSDFSampler {
public:
    int flipped = 0;              ///< not 0 if the context was turned when the sampler was made
    BRDFSampler* brdf = nullptr;  ///< the face of `bsdf` that was asked for last
    BSDFSampler* bsdf = nullptr;  ///< the base's sampler, never null; goes back to it on release

    /// This sampler for each side that the base's sampler has.
    BRDFSampler* getBRDF(BSDFSide side) override;

    /// Turned as when the sampler was made.
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    /// Always turned, on front hits too. From which side light is gathered is the host's choice.
    void traceForward(PelkContext& context, int doDiffuse) override;

    // These forward to `brdf` with the context as it is; what is not here is that of a plain
    // sampler.
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
