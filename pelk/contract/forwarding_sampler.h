#pragma once

#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// Base of samplers that stand in front of another one and change a few of its operations: all
/// others go straight through, but for the choice among sub-samplers and its densities, which are
/// those of a plain sampler. Tracing and transparency of the whole go by the face, so they meet
/// what is changed there. Pooled and not constructed anew: both fields are written for each hit.
class PELK_API ForwardingSampler : public BSDFSampler, public BRDFSampler {
public:
    BSDFSampler* bsdf = nullptr;  ///< the other sampler, never null while handed out
    BRDFSampler* brdf = nullptr;  ///< its face of the side that was asked for last; null at first

    /// This sampler for each side that the other has. To be asked before the face is used.
    BRDFSampler* getBRDF(BSDFSide side) override;
    PelkVolume* getVolume(PelkContext& context) override;

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
    // These three answer with nothing before a face was asked for.
    int getNumSubBRDFs() override;
    BRDFSampler* getSubBRDF(int index, Color& weight) override;
    Color getSelfIllumination(PelkContext& context) override;
};

}  // namespace Tarnkit
