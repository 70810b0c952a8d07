#pragma once

#include "pelk/contract/material.h"
#include "pelk/materials/matte/matte_bsdf.h"
#include "pelk/materials/matte/matte_fragment.h"
#include "pelk/materials/matte/wrapper_params.h"

/// Properties of a surface as a whole, around a base material; above all a shadow catcher (matte)
/// for putting rendered objects into a photograph.
///
/// An ordinary hit is the base's, with `alpha_contribution` applied, and `generate_gi` on GI rays.
/// The host finds what else is set (other GI and caustics, exclude tables) in surfaceProperties.
///
/// A matte (`matte_surface`) shows the background to the camera, if asked also to other rays
/// before the first diffuse bounce. The background is dimmed by the shadows that fall on the hit
/// and by what the base reflects and refracts, the only parts of the base that show. Under
/// `maya_background_shader_compatibility` the wrapper traces one mirror ray instead of asking the
/// base. A matte that is met by the rays of another matte is not there at all.
///
/// Without a base an ordinary hit is opaque black, and a matte shows nothing of its own.
class MtlWrapper : public RenderPooled<MatteBSDF, WithParams<WrapperParams, PelkRTMaterial>> {
public:
    static constexpr const char* kName = "MtlWrapper";
    static constexpr u32 kID = 0x77B266B0;

    using RenderPooled::RenderPooled;

    void renderBegin(PelkRenderer& renderer) override;
    void renderEnd(PelkRenderer& renderer) override;
    void frameBegin(PelkRenderer& renderer) override;
    void frameEnd(PelkRenderer& renderer) override;

    /// Leaves surfaceProperties pointing here, so that what the hit spawns knows it as a matte.
    void shade(PelkContext& context) override;
    /// A MatteBSDF. Where the hit shows a matte it only measures direct light, with and without
    /// shadows; else it stands for the base's sampler.
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    int getMaterialID(PelkContext& context) override;
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;
    RTMtlInterface* getMultiMtl() override;

private:
    enum class Road { Hidden, Matte, Ordinary };
    Road enter(PelkContext& context);

    void shadeOrdinary(PelkContext& context);
    void applyAlphaContribution(PelkContext& context) const;

    void shadeMatte(PelkContext& context);
    Color showBase(PelkContext& context);
    float showMirror(PelkContext& context) const;
    void traceMirror(PelkContext& context, float alphaValue) const;
    bool tracesMirror(const PelkContext& context) const;
    Color catchShadows(PelkContext& context) const;
    void setShadowChannels(PelkContext& context, Color unshadowed, Color shadowed) const;
    float shadowBrightness(PelkContext& context) const;
    void finishAlpha(PelkContext& context, Color shadow, Color fade, float alphaValue) const;

    MaterialInterface* baseMaterial = nullptr;  // these two: set in frameBegin, null without a
    BSDFInterface* baseBSDF = nullptr;          // base or if it doesn't offer the interface
    GrowTable<int> channelIndices{100};         // of the render channels; set in renderBegin
    MatteFragmentManagers fragmentManagers;
};

using MtlWrapperDesc = DescOf<MtlWrapper>;
