#pragma once

#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// A thin translucent surface, such as a leaf or a lampshade, made of two samplers: that of the
/// viewer's side, and that of the side beyond, on which light falls that shows through. `t` is the
/// translucency, per channel:
///
/// - The viewer's side is lit and traced in full, and counts by 1 - t.
/// - The diffuse light on the side beyond, direct and indirect, counts by t, as does the light that
///   this side emits. It is lit by its own sampler from its own side, without highlights, and is
///   taken as scattered evenly on the way through. Its own rays are not traced.
/// - Straight through goes (1 - t) of what the first sampler lets through, and t of what the second
///   does.
///
/// A null sampler, or one without a BRDF, is clear.
///
/// There are two BRDF objects, one for each side, which do the same: light loops send light from
/// beyond only to a BRDF that is another object than the viewer's. So a sampler wrapped around this
/// one that is one object for both sides gets no direct light from beyond.
///
/// Pooled and not constructed anew: init writes every field at each hit. One thread uses it. The
/// pool's owner releases the two samplers, by getFirst and getSecond, when this one comes back.
class PELK_API TwoSidedBSDF : public BSDFSampler {
public:
    /// Composes two samplers at a hit; either may be null. They stay the caller's, and were made
    /// with `flippedSide` 0 and the hit turned thus: for the first with the viewer on its front
    /// (flipSide before getBSDF if the hit was on the back and not turned already), for the second
    /// turned over once more. Each is used in the state in which it was made, whatever way the
    /// context lies by then.
    ///
    /// `translucency`: t above, per channel 0 to 1. `multByFrontDiffuse`: not 0 multiplies light
    /// from beyond by the diffuse colour of the first sampler too, as of a surface dyed through.
    /// `clear`: what goes straight through besides, per channel 0 to 1. Doesn't throw.
    void init(PelkContext& context, const Color& translucency, BSDFSampler* first,
              BSDFSampler* second, int multByFrontDiffuse, const Color& clear);

    /// The sampler of the viewer's side, or null.
    BSDFSampler* getFirst() const { return near.bsdf; }
    /// The sampler of the side beyond, or null.
    BSDFSampler* getSecond() const { return far.bsdf; }

    /// One of the two objects, once the samplers' BRDFs are looked up; null if neither sampler has
    /// one. Without translucency the same for both sides, as nothing is lit from beyond then.
    BRDFSampler* getBRDF(BSDFSide side) override;
    /// The first sampler's, else the second's.
    PelkVolume* getVolume(PelkContext& context) override;

private:
    /// One of the samplers.
    struct Side {
        BSDFSampler* bsdf = nullptr;
        BRDFSampler* brdf = nullptr;  // as found last, null if it has none
        bool backSide = false;        // of the context when the sampler was made

        void findBRDF(bool facesViewer);
        Color transparency(PelkContext& context) const;
    };

    /// The BRDF of the whole, which works on both samplers. One per side with the same behaviour.
    /// Light loops skip the far side if both addresses are equal.
    class PELK_API SideBRDF : public BRDFSampler {
    public:
        TwoSidedBSDF* owner = nullptr;

        Color getDiffuseColor(Color& lightColor) override;
        Color getLightMult(Color& lightColor) override;
        Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
                   Color& origLightColor, float probLight, int flags) override;
        void multiplyLight(float factor) override;
        void lightFinished(int light) override;
        void traceForward(PelkContext& context, int doDiffuse) override;
        Color getTransparency(PelkContext& context) override;
        Color getSelfIllumination(PelkContext& context) override;
    };

    class AsMade;  // puts a context in the state in which a sampler was made

    /// What the viewer sees of the side beyond besides direct light, not yet scaled by farFilter.
    Color lightFromBeyond(PelkContext& context, int doDiffuse) const;
    Color glowFromBeyond(PelkContext& context) const;

    Side near, far;
    Color nearShare;    // of what the viewer's side scatters and lets through
    Color farShare;     // of what the side beyond lets through
    Color farFilter;    // tint of transmitted light: farShare, times the first's diffuse if asked
    Color clearShare;   // what goes straight through besides
    SideBRDF brdfs[2];  // by BSDFSide
};

}  // namespace Tarnkit
