#pragma once

#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// A thin surface between two samplers: that of the viewer's side, and that of the side beyond,
/// whose light shows through by a translucency t.
///
/// What the viewer's side scatters and traces counts by 1 - t, the diffuse light that falls on the
/// side beyond by t. Straight through goes 1 - t of what the first sampler lets through, and t of
/// what the second does. A null sampler is clear.
///
/// There are two faces, which do the same: hosts send light from beyond to a face of its own only.
/// A sampler around this one that has one face for both sides gets no direct light from beyond.
class PELK_API TwoSidedBSDF : public BSDFSampler {
public:
    /// Composes two samplers at a hit. They stay the caller's, and were made with `flippedSide` 0
    /// and the context turned thus: for the first to the viewer, unless it had been turned
    /// already; for the second to the other side from there. Each is used in the same state.
    /// `multByFrontDiffuse`: light from beyond is also multiplied by the diffuse colour of the
    /// first sampler. `clear` is what goes straight through besides. Writes every field.
    void init(PelkContext& context, const Color& translucency, BSDFSampler* first,
              BSDFSampler* second, int multByFrontDiffuse, const Color& clear);

    /// The sampler of the viewer's side, or null.
    BSDFSampler* getFirst() const { return near.bsdf; }
    /// The sampler of the side beyond, or null.
    BSDFSampler* getSecond() const { return far.bsdf; }

    /// Null if neither sampler has a face. Without translucency both sides have the same face.
    BRDFSampler* getBRDF(BSDFSide side) override;
    PelkVolume* getVolume(PelkContext& context) override;

private:
    /// One of the samplers, and the state of the context in which it was made.
    struct Side {
        BSDFSampler* bsdf = nullptr;
        BRDFSampler* face = nullptr;
        bool backSide = false;

        void findFace(bool lookingAt);
        Color transparency(PelkContext& context) const;
    };

    class PELK_API Face : public BRDFSampler {
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

    class AsMade;

    Color lightFromBeyond(PelkContext& context, int doDiffuse) const;
    Color glowFromBeyond(PelkContext& context) const;

    Side near, far;
    Color nearShare;  // of what the viewer's side scatters and lets through
    Color farShare;   // of what the side beyond lets through
    Color farFilter;  // of light from beyond: farShare, and the first's diffuse colour if asked
    Color clearShare;
    Face faces[2];  // by BSDFSide
};

}  // namespace Tarnkit
