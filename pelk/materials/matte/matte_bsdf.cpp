#include "pelk/materials/matte/matte_bsdf.h"

#include <algorithm>

void MatteBSDF::setUp(PelkContext& context, BSDFSampler* base, MatteTraceMode traceMode,
                      bool isActive) {
    bsdf = base;
    mode = traceMode;
    active = isActive ? 1 : 0;
    transparency = Color(0);
    if (!isActive)
        return;
    shadowedLight = unshadowedLight = shadowedTotal = unshadowedTotal = Color(0);
    lightMis = context.renderer->sequenceData.giEngine->usesLightMis(context);
}

BRDFSampler* MatteBSDF::getBRDF(BSDFSide side) {
    return bsdf && !active ? bsdf->getBRDF(side) : this;
}

PelkVolume* MatteBSDF::getVolume(PelkContext& context) {
    return bsdf ? bsdf->getVolume(context) : nullptr;
}

Color MatteBSDF::getDiffuseColor(Color& lightColor) {
    if (!active)
        return Color(0);
    const Color arrived = lightColor;
    lightColor *= transparency;
    return arrived;
}

Color MatteBSDF::getLightMult(Color& lightColor) {
    return getDiffuseColor(lightColor);
}

Color MatteBSDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                      Color& origLightColor, float probLight, int flags) {
    if (!active)
        return Color(0);
    float cosine = dotDouble(direction, context.normal);
    if (cosine < 0.0f)
        cosine = 0.0f;
    if (lightMis) {
        // The power heuristic for the light's sample, against the cosine sampling of the host's
        // indirect rays, in the scale of `probLight`: 2 pi times the density per solid angle. The
        // cosine is multiplied by the square before the division; MtlDiffuse rounds the weight
        // first. The two differ in the last bit, and each keeps its order: rendered pictures are
        // compared bit by bit. Where both densities are 0 there is nothing to weight.
        const float own = 2.0f * cosine, square = probLight * probLight;
        const float sum = own * own + square;
        cosine = sum != 0.0f ? cosine * square / sum : 0.0f;
    }
    if (flags & kEvalDiffuse) {
        shadowedLight += lightColor * cosine;
        unshadowedLight += origLightColor * cosine;
    }
    const Color arrived = lightColor;
    lightColor *= transparency;
    origLightColor *= transparency;
    return arrived * cosine;
}

void MatteBSDF::multiplyLight(float factor) {
    shadowedLight *= factor;
    unshadowedLight *= factor;
}

void MatteBSDF::lightFinished(int) {
    shadowedTotal += shadowedLight;
    unshadowedTotal += unshadowedLight;
    shadowedLight = unshadowedLight = Color(0);
}

void MatteBSDF::traceForward(PelkContext& context, int) {
    if (mode == kMatteTracesBlack)
        return setOpaqueBlack(context);
    setNothing(context);
    if (context.resultFragment)
        context.resultFragment->clear(1);
}

Color MatteBSDF::getTransparency(PelkContext&) {
    return active ? transparency : Color(0);
}
