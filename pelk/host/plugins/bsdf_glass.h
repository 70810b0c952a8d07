#pragma once

#include "pelk/contract/material.h"
#include "pelk/host/plugins/facet_bsdf.h"
#include "pelk/host/plugins/facet_lobe.h"

namespace Tarnkit {

/// What the samplers of BSDFGlass read of their plug-in; constant within a frame.
struct GlassLook {
    Color reflection, refraction;
    FacetShape shape;
    PelkVolume* volume = nullptr;  ///< what lies behind the surface; never null
    bool passesShadows = false;
};

/// Microfacet reflection and refraction of BSDFGlass at one hit. Pooled and not constructed anew:
/// `set` writes every field but those of `chosen`, which getNewContext writes.
class GlassSampler : public BRDFSampler, public BSDFSampler {
public:
    void set(const GlassLook& look, PelkContext& context, bool singleSided);

    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    int getNumSamples(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
    /// Samples a facet, then reflection or refraction with a probability of its Fresnel
    /// reflectance.
    PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse) override;
    float setupContext(PelkContext& context, PelkContext& newContext, float random,
                       int sample) override;

    BRDFSampler* getBRDF(BSDFSide side) override;
    PelkVolume* getVolume(PelkContext& context) override;

private:
    struct Chosen {
        bool refracts = false;
        Vector direction;
        Vector derivX, derivY;  ///< of a refracted ray
        float weight = 0.0f;
        /// Per solid angle; below 0 without MIS (RenderContext::bsdfDensity).
        float density = 0.0f;
    };
    void choose(PelkContext& context);
    void chooseReflection(const PelkContext& context, const FacetSample& sample, float share);
    bool chooseRefraction(const PelkContext& context, const Vector& facet);

    const GlassLook* look = nullptr;
    FacetLobe lobe;
    float n = 1.0f;  ///< relative index of refraction: far medium over the viewer's
    LightSearch lights = LightSearch::LightLoop;  ///< for the reflected part
    bool singleSided = false;
    Chosen chosen;
};

/// Parameters of BSDFGlass, as the host refreshes them at each frameBegin.
struct GlassParams {
    Color reflection;              ///< factor of the reflected light, linear
    Color refraction;              ///< factor of the refracted light, taken at each surface
    float ior = 1.5f;              ///< of the medium behind the surface; unused with `volume`
    float roughness = 0.0f;        ///< 0 to 1; its square is the width alpha of the GTR lobe
    float tail = 2.0f;             ///< exponent gamma of the GTR lobe, 0 to 10; 2 is GGX
    PluginBase* volume = nullptr;  ///< EXT_VOLUME of the medium behind the surface; may be null
    /// 1: shadow rays pass straight through, attenuated, in place of the refracted rays' caustics:
    /// these don't find lights any more where shadow rays do. Reflected caustics stay.
    int passShadows = 0;

    static ParamRows<GlassParams> table();
};

/// A rough or smooth dielectric (glass, water, ice) as a BSDF plug-in. The medium outside is taken
/// from the ray's stack of media, so nested objects, as ice in water in a glass, need no gap
/// between them.
class BSDFGlass final : public FacetBSDF<GlassParams, GlassSampler, GlassLook> {
public:
    static constexpr const char* kName = "BSDFGlass";
    static constexpr u32 kID = 0x7E100062;

    using FacetBSDF::FacetBSDF;
    void frameBegin(PelkRenderer& renderer) override;

private:
    /// The medium of the plug-in's own index.
    class OwnVolume final : public PelkVolume {
    public:
        explicit OwnVolume(BSDFGlass& glass_) : glass(glass_) {}
        PluginBase* getPlugin() override { return &glass; }
        float getIOR(PelkContext&) override { return glass.params.ior; }

    private:
        BSDFGlass& glass;
    };

    OwnVolume ownVolume{*this};
};

}  // namespace Tarnkit
