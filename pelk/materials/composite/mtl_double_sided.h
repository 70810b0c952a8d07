#pragma once

#include "pelk/contract/material.h"
#include "pelk/contract/material_desc.h"

/// Parameters of MtlDoubleSided, as the host refreshes them at each frameBegin.
struct DoubleSidedParams {
    PluginBase* baseMtl = nullptr;  ///< the one-sided material
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
class MtlDoubleSided final : public PelkMaterial {
public:
    explicit MtlDoubleSided(PelkPluginDesc* pluginDesc);

    void frameBegin(PelkRenderer& renderer) override;
    void frameEnd(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;

private:
    DoubleSidedParams params;
    MaterialInterface* baseMaterial = nullptr;  // these two: set in frameBegin
    BSDFInterface* baseBSDF = nullptr;
    ThreadPools<BackSideBSDF> pool;  // lives from frameBegin to frameEnd
};

class MtlDoubleSidedDesc : public MaterialDesc<MtlDoubleSided> {
public:
    MtlDoubleSidedDesc();
    u32 getPluginID() override { return 0x7782FC69; }
    const char* getName() override { return "MtlDoubleSided"; }
};
