#pragma once

#include "pelk/contract/material.h"

namespace Tarnkit {

/// Lambert reflection with a mirror lobe on top, at one hit. Pooled and not constructed anew, so
/// whoever hands it out writes every field.
class DiffuseBRDF : public BRDFSampler, public BSDFSampler {
public:
    Color diffuse;     ///< what light is multiplied by, the mirror's share already taken off
    Color reflection;  ///< colour of the mirror lobe
    int lightMis = 0;  ///< not 0: indirect rays may find lights too, so eval shares with them

    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void traceForward(PelkContext& context, int doDiffuse) override;
    int getNumSamples(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
    PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse) override;
    float setupContext(PelkContext& context, PelkContext& newContext, float random,
                       int sample) override;

    /// The front scatters, the back doesn't.
    BRDFSampler* getBRDF(BSDFSide side) override;
};

}  // namespace Tarnkit

/// Parameters of MtlDiffuse, as the host refreshes them at each frameBegin.
struct DiffuseParams {
    Color diffuse{0.5f};                       ///< reflectance per channel
    TextureInterface* diffuseTex = nullptr;    ///< blended over `diffuse`
    float diffuseTexMult = 1.0f;               ///< weight of the texture
    Color reflection;                          ///< colour of the mirror lobe
    Color transparency;                        ///< share of light that goes straight through
    PluginBase* renderChannelColor = nullptr;  ///< channel that gets the result colour
    PluginBase* renderChannelAlpha = nullptr;  ///< channel that gets the result alpha

    static ParamRows<DiffuseParams> table();
};

/// A matt surface with a perfect mirror on top, let through in part.
///
/// On the front, what is not transparent (O = 1 - transparency) reflects: the mirror takes its
/// colour R, the diffuse colour is left with 1 - mean(R). The back, and every shadow ray, sees a
/// filter of the colour `transparency`. The surface is complete in shade(); the sampler of
/// getBSDF() leaves transparency out and splits between mirror and diffuse by R itself.
class MtlDiffuse final
    : public RenderPooled<DiffuseBRDF, WithParams<DiffuseParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "MtlDiffuse";
    static constexpr u32 kID = 0x7774297E;

    using RenderPooled::RenderPooled;

    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;

private:
    void shadeFilter(PelkContext& context) const;
    void shadeSurface(PelkContext& context) const;
    bool tracesReflection(const PelkContext& context) const;

    int colorChannel = -1, alphaChannel = -1;  // indices of the channels; -1: none. Per frame
};

using MtlDiffuseDesc = DescOf<MtlDiffuse>;
