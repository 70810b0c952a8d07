#pragma once

#include "pelk/contract/material.h"

/// What MatteBSDF::traceForward leaves in the results.
enum MatteTraceMode : int { kMatteTracesNothing = 0, kMatteTracesBlack = 1 };

/// Measures the light that reaches a hit, with and without shadows, in the place of a surface.
/// Gives no colour of its own. Inactive it only stands in front of the base's sampler. Pooled and
/// not constructed anew: setUp() writes every field that is read until the next one.
class MatteBSDF : public BSDFSampler, public BRDFSampler {
public:
    BSDFSampler* bsdf = nullptr;     ///< the base's sampler; null if there is none
    int mode = kMatteTracesNothing;  ///< a MatteTraceMode
    int active = 0;                  ///< 1: collects light
    Color transparency;              ///< share of light left for layers below
    Color shadowedLight;             ///< these two: of the current light so far
    Color unshadowedLight;
    int lightMis = 0;     ///< not 0: indirect rays may find lights too, so eval shares with them
    Color shadowedTotal;  ///< these two: of all finished lights
    Color unshadowedTotal;

    /// Makes it ready for a hit. Without `isActive` neither the sums nor the renderer are touched.
    void setUp(PelkContext& context, BSDFSampler* base, MatteTraceMode traceMode, bool isActive);

    /// The base's face while it is inactive and there is a base, else its own for both sides.
    BRDFSampler* getBRDF(BSDFSide side) override;
    PelkVolume* getVolume(PelkContext& context) override;

    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void multiplyLight(float factor) override;
    void lightFinished(int light) override;
    void traceForward(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
};
