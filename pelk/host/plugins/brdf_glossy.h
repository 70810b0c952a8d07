#pragma once

#include <array>

#include "pelk/contract/material.h"
#include "pelk/host/plugins/facet_bsdf.h"
#include "pelk/host/plugins/facet_lobe.h"

namespace Tarnkit {

/// What the samplers of BRDFGlossy read of their plug-in; constant within a frame.
struct GlossyLook {
    Color color;
    float ior = 0.0f;
    FacetShape shape;
    /// FacetShape::albedo by the cosine of the view, 0 to 1 in even steps.
    std::array<float, 33> albedo{};

    float albedoAt(float cosine) const;
};

/// The microfacet reflection of BRDFGlossy at one hit: sampler and both sides' BRDF in one. Pooled
/// and not constructed anew: `set` writes every field.
class GlossySampler : public BRDFSampler, public BSDFSampler {
public:
    void set(const GlossyLook& look, PelkContext& context, bool singleSided);

    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    int getNumSamples(PelkContext& context, int doDiffuse) override;
    PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse) override;
    float setupContext(PelkContext& context, PelkContext& newContext, float random,
                       int sample) override;

    BRDFSampler* getBRDF(BSDFSide side) override;

private:
    float fresnel(float cosine) const;

    FacetLobe lobe;
    Color color;       ///< factor of the lobe, energy compensation included, Fresnel not
    Color passes;      ///< transmitted to layers below
    float ior = 0.0f;  ///< 0: no Fresnel, the same from all angles
    LightSearch lights = LightSearch::LightLoop;
    bool singleSided = false;
};

/// Parameters of BRDFGlossy, as the host refreshes them at each frameBegin.
struct GlossyParams {
    Color color;             ///< reflectance at normal incidence, linear
    float roughness = 0.3f;  ///< 0 to 1; its square is the width alpha of the GTR lobe
    float tail = 2.0f;       ///< exponent gamma of the GTR lobe, 0 to 10; 2 is GGX
    float ior = 0.0f;        ///< of the dielectric whose Fresnel reflectance scales it; 0: none

    static ParamRows<GlossyParams> table();
};

/// A GTR microfacet reflection as a BSDF plug-in: a rough metal, or with `ior` a coat of varnish
/// over another layer.
///
/// A single-scattering lobe loses the light that hits a second facet, so it is scaled until a white
/// surface passes the furnace test (white in white surroundings). Turquin, "Practical multiple
/// scattering compensation for microfacet models", 2019, eq. 16.
class BRDFGlossy final : public FacetBSDF<GlossyParams, GlossySampler, GlossyLook> {
public:
    static constexpr const char* kName = "BRDFGlossy";
    static constexpr u32 kID = 0x7E100061;

    using FacetBSDF::FacetBSDF;
    void frameBegin(PelkRenderer& renderer) override;
};

}  // namespace Tarnkit
