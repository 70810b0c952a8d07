#pragma once

#include <array>

#include "pelk/contract/material.h"
#include "pelk/host/plugins/facet_bsdf.h"
#include "pelk/host/plugins/facet_lobe.h"

namespace Tarnkit {

/// What the samplers of glossy surfaces know of their plug-in; it doesn't change within a frame.
struct GlossyLook {
    Color color;
    float ior = 0.0f;
    FacetShape shape;
    /// What a white surface mirrors, by the cosine of the view; 0 to 1 in even steps.
    std::array<float, 33> albedo{};

    float albedoAt(float cosine) const;
};

/// Rough reflection at one hit. Pooled and not constructed anew: `set` writes every field.
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
    Color color;       ///< what the lobe is multiplied by, but for the part of the angle
    Color passes;      ///< share of light that goes on to layers below
    float ior = 0.0f;  ///< 0: the angle makes no difference
    LightSearch lights = LightSearch::LightLoop;
    bool singleSided = false;
};

struct GlossyParams {
    Color color;
    float roughness = 0.3f;
    float tail = 2.0f;
    float ior = 0.0f;

    static ParamRows<GlossyParams> table();
};

/// A rough mirror as a BSDF plug-in, or a coat of varnish on top of another layer.
///
/// Its highlights have the width of the roughness and fall off by the tail. Light that meets more
/// than one facet isn't lost: the lobe is scaled so that a white surface in white surroundings is
/// white. Turquin, "Practical multiple scattering compensation for microfacet models", 2019,
/// eq. 16.
class BRDFGlossy final : public FacetBSDF<GlossyParams, GlossySampler, GlossyLook> {
public:
    static constexpr const char* kName = "BRDFGlossy";
    static constexpr u32 kID = 0x7E100061;

    using FacetBSDF::FacetBSDF;
    void frameBegin(PelkRenderer& renderer) override;
};

}  // namespace Tarnkit
