#pragma once

#include "pelk/contract/material.h"

/// Parameters of MtlRenderStats, as the host refreshes them at each frameBegin. The flags are 0
/// for hidden.
struct RenderStatsParams {
    PluginBase* baseMtl = nullptr;  ///< the material of what is seen
    int cameraVisibility = 1;       ///< to the camera's own rays
    int reflectionsVisibility = 1;  ///< to rays from the camera by way of a reflection
    int refractionsVisibility = 1;  ///< to rays from the camera by way of a refraction
    int giVisibility = 1;           ///< to rays from the camera by way of diffuse scattering
    int shadowsVisibility = 1;      ///< to shadow rays
    int shadowsReceive = 1;         ///< 0: lit as if nothing stood before the lights
    float visibility = 1.0f;        ///< share of the base in the result: 0 is clear, 1 is full

    static ParamRows<RenderStatsParams> table();
};

/// The BSDF of a surface that is not there: transmits all light straight on and scatters none. It
/// knows nothing of the hit, so all threads share one, and there is no pool.
class TransparentBSDF : public BSDFSampler, public BRDFSampler {
public:
    /// This sampler, for both sides.
    BRDFSampler* getBRDF(BSDFSide side) override;
    void traceBSDFForward(PelkContext& context, int doDiffuse) override;
    Color getBSDFTransparency(PelkContext& context) override;

    // All light passes on to layers below, so lights keep their colours.
    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void traceForward(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
};

/// Hides its object from kinds of rays (camera, reflected, refracted, indirect, shadow), and fades
/// it as a whole.
///
/// A ray that the object is hidden from goes straight on, as if nothing were there. To all other
/// rays radiance and opacity of the base show by the share `visibility`, and the base gets as much
/// less throughput. The sampler of getBSDF() knows hidden and shown alone: it is the base's own
/// while anything shows, so a fade is seen where shade() is called. Without a base the surface is
/// opaque black, faded like others.
class MtlRenderStats final : public WithParams<RenderStatsParams, PelkRTMaterial> {
public:
    static constexpr const char* kName = "MtlRenderStats";
    static constexpr u32 kID = 0x77A0B885;

    using WithParams::WithParams;

    void frameBegin(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    int getMaterialID(PelkContext& context) override;
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;
    RTMtlInterface* getMultiMtl() override;

private:
    float visibilityTo(const PelkContext& context) const;
    void shadeBase(PelkContext& context, float visible);

    MaterialInterface* baseMaterial = nullptr;  // these two: set in frameBegin
    BSDFInterface* baseBSDF = nullptr;
    TransparentBSDF transparent;
};

using MtlRenderStatsDesc = DescOf<MtlRenderStats>;
