#pragma once

#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// A decorator for samplers, base of those that wrap the sampler of another material and change a
/// few of its operations, as one that enters a material id or replaces the environment does. All
/// BRDFSampler operations go straight to the wrapped BRDF, but for chooseRandomSubBRDF and
/// evalPdfs, which are those of a sampler that isn't made of others. traceBSDFForward and
/// getBSDFTransparency are the bodies of BSDFSampler, which call this object's BRDF operations, so
/// that an override of, say, getTransparency shows in the whole.
///
/// Pooled and not constructed anew: getBSDF writes `bsdf` with the base's sampler and `brdf` with
/// null at each hit, and releaseBSDF gives `bsdf` back to the base. As one object serves both
/// sides, the operations hold for the side that getBRDF was asked for last; callers ask anew before
/// use.
///
/// Operations throw what the wrapped sampler's throw. One thread uses it, between getBSDF and
/// releaseBSDF, like any sampler.
class PELK_API ForwardingSampler : public BSDFSampler, public BRDFSampler {
public:
    BSDFSampler* bsdf = nullptr;  ///< the wrapped sampler; not null while getBRDF may be asked
    BRDFSampler* brdf = nullptr;  ///< its BRDF of the side asked for last; null before, or if none

    /// This object, if the wrapped sampler has a BRDF for the side; else null. To be asked before
    /// any BRDF operation but the last three: those above them need `brdf`.
    BRDFSampler* getBRDF(BSDFSide side) override;
    /// The wrapped sampler's. Needs no getBRDF before, as it is asked once for the whole surface.
    PelkVolume* getVolume(PelkContext& context) override;

    // Each hands its arguments on to `brdf` and returns its answer. They keep the context as it is:
    // a wrapper that shades in a changed context (bump, turned sides) changes it in its own
    // override, and puts it back there.
    Color getDiffuseColor(Color& lightColor) override;
    Vector getDiffuseNormal(PelkContext& context) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void multiplyLight(float factor) override;
    void lightFinished(int light) override;
    int getUseIrradianceMap() override;
    void traceForward(PelkContext& context, int doDiffuse) override;
    int getNumSamples(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
    Color getColor(PelkContext& context, Color color) override;
    Color getAlpha(PelkContext& context, Color alpha) override;
    PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse) override;
    float setupContext(PelkContext& context, PelkContext& newContext, float random,
                       int sample) override;
    RenderChannelsInfo* getRenderChannels() override;
    // These three may come before getBRDF, as hosts ask them to learn what a surface is made of: 0,
    // null and black then.
    int getNumSubBRDFs() override;
    BRDFSampler* getSubBRDF(int index, Color& weight) override;
    Color getSelfIllumination(PelkContext& context) override;
};

}  // namespace Tarnkit
