#pragma once

#include "pelk/materials/maya/maya_ramp_brdf.h"

/// Parameters of MtlMayaRamp. The host refreshes the fields here, and those of MayaRampParams from
/// `ior` to `refractionLimit`, at each frameBegin. The ramps come from lists that are read by name.
struct MtlRampParams : MayaRampParams {
    int colorInput = kRampLightAngle;                  ///< a RampInput: what colours depend on
    TextureInterface* ambientTex = nullptr;            ///< light from everywhere; black without one
    TextureFloatInterface* eccentricityTex = nullptr;  ///< width of the highlight; 0.5 without one
    TextureFloatInterface* specularityTex = nullptr;   ///< weight of the highlight; 1 without one
    TextureFloatInterface* diffuseTex = nullptr;       ///< weight of the diffuse term; 1 without
    TextureFloatInterface* fscatterTex = nullptr;  ///< share taken off it; nothing else shows it
    PluginBase* volume = nullptr;                  ///< the medium behind the surface
    PluginBase* bumpBrdf = nullptr;  ///< bumped stand-in for getBSDF, which leads back to this one
    PelkPluginList channels;         ///< render channels of the result colour

    static ParamRows<MtlRampParams> table();
};

/// A surface whose look is drawn with seven ramps: colour, transparency, incandescence, highlight,
/// environment, roll-off of the highlight, and reflectivity. Made for stylised pictures, from cel
/// shading to backlit rims; it conserves no energy.
///
/// A bump map comes in by way of `bump_brdf`, a BSDF plug-in around this material: `shade` takes
/// the sampler from there, and that plug-in asks this material's getBSDF at the bumped normal.
/// `shade` limits the colour to 0 to 1; who drives the sampler himself gets it unlimited. The ramp
/// has no descriptor text, so hosts that render from it don't show it.
class MtlRampPlugin final
    : public RenderPooled<MayaRampBRDF, WithParams<MtlRampParams, PelkMaterial>> {
public:
    static constexpr const char* kName = "MtlMayaRamp";
    static constexpr u32 kID = 0x77C09D5D;

    using RenderPooled::RenderPooled;

    void frameBegin(PelkRenderer& renderer) override;
    /// Forgets the channels; hosts may drop them between frames. Doesn't pass the call on.
    void frameEnd(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    /// Null outside a render. Reads the hit's textures; `flags` says nothing to it.
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;

private:
    void loadRamps(double time);
    void findChannels(PelkRenderer& renderer);
    void shadeThrough(PelkContext& context, BSDFInterface& provider);

    BSDFInterface* bumpInterface = nullptr;  // this and the indices: set in frameBegin
    GrowTable<int> channelIndices{100};
    int overbrightWarned = 0;  // shared by the render threads, reset in frameBegin
};

using MtlRampPluginDesc = DescOf<MtlRampPlugin>;
