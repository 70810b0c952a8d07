#pragma once

#include "pelk/contract/material.h"

/// Parameters of MtlSingleBRDF, as the host refreshes them at each frameBegin.
struct SingleBRDFParams {
    /// Multiplies the radiance of the hit, and the throughput (rayWeight) with which the plug-in
    /// decides whether a bounce is worth a ray; per channel.
    Color filter{1.0f};
    PluginBase* brdf = nullptr;   ///< the BSDF plug-in that scatters; null: the surface is black
    int doubleSided = 1;          ///< what a hit on the back does, see BackSide
    int allowNegativeColors = 0;  ///< not 0: negative channels are left as they come

    static ParamRows<SingleBRDFParams> table();
};

/// Values of `double_sided`: what a hit on the back of the surface does. It is shaded under any
/// other value.
enum BackSide : int {
    kBackSingle = 0,         ///< shaded; the plug-in is told that the surface has one side
    kBackShaded = 1,         ///< shaded
    kBackHidesCamera = 2,    ///< see-through for the camera ray itself
    kBackHidesAll = 3,       ///< see-through for all but shadow rays
    kBackKeepsRefracted = 4  ///< the same, but shaded for rays that were refracted and not
                             ///< reflected or diffusely scattered
};

/// The plug-in's BSDF where backs may be see-through: scatters as that one does, but lets all light
/// through where a back is to be looked through. It is a sampler of its own as a wrapper must be:
/// the plug-in's can't be told of `double_sided`. Pooled and not constructed anew:
/// MtlSingleBRDF::getBSDF writes every field.
class BSDFBackFace : public BSDFSampler, public BRDFSampler {
public:
    BSDFSampler* bsdf = nullptr;    ///< the plug-in's sampler; null if it gave none
    BRDFSampler* brdf = nullptr;    ///< its BRDF of the side that was asked for last
    int doubleSided = kBackShaded;  ///< a BackSide

    /// This sampler for each side that the plug-in's sampler has.
    BRDFSampler* getBRDF(BSDFSide side) override;

    Color getDiffuseColor(Color& lightColor) override;
    Vector getDiffuseNormal(PelkContext& context) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    Color getTransparency(PelkContext& context) override;
};

/// A BSDF plug-in made a whole surface.
///
/// The plug-in scatters; this material adds what a bare BSDF lacks: a filter on radiance and
/// throughput, the rule for hits on the back, and a guard against radiance that no light can have
/// (NaN, infinite, negative), which would spread over the picture with the first filter. It is
/// reported once a frame. Without a plug-in the surface is opaque black; where the plug-in has no
/// sampler for a hit it is fully transparent.
class MtlSingleBRDF final
    : public RenderPooled<BSDFBackFace, WithParams<SingleBRDFParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "MtlSingleBRDF";
    static constexpr u32 kID = 0x77742AB2;

    using RenderPooled::RenderPooled;

    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    /// The plug-in's own sampler while `double_sided` is below 2, else a BSDFBackFace around it.
    /// `double_sided` must not change while samplers are out.
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;

private:
    void shadeFiltered(PelkContext& context);
    void shadeLit(PelkContext& context, BSDFSampler* sampler);

    BSDFInterface* bsdfInterface = nullptr;  // this and filterActive: set in frameBegin
    int filterActive = 0;
    int warned = 0;                        // shared by the render threads, reset in frameBegin:
    int opaqueKnown = 0, opaqueFlags = 0;  // the plug-in's flags, asked for once a frame
};

using MtlSingleBRDFDesc = DescOf<MtlSingleBRDF>;
