#pragma once

#include "pelk/contract/material.h"

/// Parameters of MtlSingleBRDF, as the host refreshes them at each frameBegin.
struct SingleBRDFParams {
    Color filter{1.0f};          ///< scales the colour, and the weight of what the plug-in spawns
    PluginBase* brdf = nullptr;  ///< the plug-in that scatters
    int doubleSided = 1;         ///< what a hit on the back does, see BackSide
    int allowNegativeColors = 0;

    static ParamRows<SingleBRDFParams> table();
};

/// Values of `double_sided`: what a hit on the back does. It is shaded under any other value.
enum BackSide : int {
    kBackSingle = 0,         ///< shaded; the plug-in is told that the surface has one side
    kBackShaded = 1,         ///< shaded
    kBackHidesCamera = 2,    ///< see-through for the camera ray itself
    kBackHidesAll = 3,       ///< see-through for all but shadow rays
    kBackKeepsRefracted = 4  ///< the same, but shaded for rays that were refracted and not
                             ///< reflected or diffusely scattered
};

/// In front of the plug-in's sampler where backs can be see-through. Pooled and not constructed
/// anew: MtlSingleBRDF::getBSDF writes every field.
class BSDFBackFace : public BSDFSampler, public BRDFSampler {
public:
    BSDFSampler* bsdf = nullptr;  ///< the plug-in's sampler; null if it gave none
    BRDFSampler* brdf = nullptr;  ///< its face of the side that was asked for last
    int doubleSided = kBackShaded;

    /// This sampler for each side that the plug-in's sampler has.
    BRDFSampler* getBRDF(BSDFSide side) override;

    Color getDiffuseColor(Color& lightColor) override;
    Vector getDiffuseNormal(PelkContext& context) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    Color getTransparency(PelkContext& context) override;
};

/// Any BSDF plug-in as a whole surface.
///
/// The plug-in scatters; this material adds a colour filter, the rule for hits on the back, and a
/// guard against colours that no light can have. Without a plug-in the surface is opaque black;
/// where the plug-in has no sampler for a hit it is fully transparent.
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
