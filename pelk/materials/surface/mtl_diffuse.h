#pragma once

#include "pelk/contract/material.h"

namespace Tarnkit {

/// The BRDF of one hit: a Lambert lobe, and on top of it a perfect mirror, a delta lobe that direct
/// light can't hit and that is therefore traced. Nothing is transmitted.
///
/// Pooled and not constructed anew, so whoever hands it out writes every field.
class DiffuseBRDF : public BRDFSampler, public BSDFSampler {
public:
    Color diffuse;     ///< albedo of the Lambert lobe, what the mirror takes already left out
    Color reflection;  ///< specular albedo, the weight of the mirror ray
    /// Not 0: the host's indirect rays can hit lights as well, so eval weights the light's sample
    /// against them (multiple importance sampling).
    int lightMis = 0;

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

    /// This sampler for the front; the back has none.
    BRDFSampler* getBRDF(BSDFSide side) override;
};

}  // namespace Tarnkit

/// Parameters of MtlDiffuse, as the host refreshes them at each frameBegin.
struct DiffuseParams {
    Color diffuse{0.5f};                       ///< albedo per channel, linear
    TextureInterface* diffuseTex = nullptr;    ///< over `diffuse`, by its alpha; null: none
    float diffuseTexMult = 1.0f;               ///< scales the texture; below 1e-12 it is not read
    Color reflection;                          ///< specular albedo per channel
    Color transparency;                        ///< transmittance per channel, straight through
    PluginBase* renderChannelColor = nullptr;  ///< channel that gets the result colour
    PluginBase* renderChannelAlpha = nullptr;  ///< channel that gets the result alpha

    static ParamRows<DiffuseParams> table();
};

/// A diffuse surface with a perfect mirror on top, behind a cut-out: `transparency` is what passes
/// straight through, without refraction.
///
/// On the front the opacity O = 1 - transparency is shared out so that no energy is made: the
/// mirror reflects R = O * reflection, the Lambert lobe keeps O * diffuse * (1 - mean(R)). shade()
/// sums direct light by next-event estimation, indirect light from the host's GI, and one mirror
/// ray, which is skipped where the throughput makes it invisible. The back, and every shadow ray,
/// sees a filter of the colour `transparency`.
///
/// The sampler of getBSDF() stands for the opaque part alone: it leaves transparency out, also from
/// the split between mirror and diffuse. A material that wraps this one and wants the cut-out calls
/// shade().
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
