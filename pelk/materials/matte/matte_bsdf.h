#pragma once

#include "pelk/contract/material.h"

/// What MatteBSDF::traceForward leaves in the results.
enum MatteTraceMode : int { kMatteTracesNothing = 0, kMatteTracesBlack = 1 };

/// A shadow catcher's BSDF: takes part in next-event estimation as a white Lambert surface would,
/// but sums the light samples with and without shadows instead of reflecting them. The quotient of
/// the two sums is the shadow that falls on the hit. It has no radiance of its own. Inactive it
/// only stands in front of the base's sampler.
///
/// Pooled and not constructed anew: setUp() writes every field that is read until the next one.
class MatteBSDF : public BSDFSampler, public BRDFSampler {
public:
    BSDFSampler* bsdf = nullptr;     ///< the base's sampler; null if there is none
    int mode = kMatteTracesNothing;  ///< a MatteTraceMode
    int active = 0;                  ///< 1: collects light
    Color transparency;              ///< share of light left for layers below
    Color shadowedLight;             ///< these two: irradiance by the current light so far
    Color unshadowedLight;
    /// Not 0: indirect rays can hit lights as well, so eval weights the light's samples against
    /// them (multiple importance sampling).
    int lightMis = 0;
    Color shadowedTotal;  ///< these two: irradiance by all finished lights
    Color unshadowedTotal;

    /// Makes it ready for a hit. Without `isActive` neither the sums nor the renderer are touched.
    void setUp(PelkContext& context, BSDFSampler* base, MatteTraceMode traceMode, bool isActive);

    /// The base's BRDF of that side while this one is inactive and there is a base; else itself,
    /// for both sides.
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
