#include "pelk/contract/forwarding_sampler.h"

namespace Tarnkit {

BRDFSampler* ForwardingSampler::getBRDF(BSDFSide side) {
    brdf = bsdf->getBRDF(side);
    return brdf ? this : nullptr;
}

PelkVolume* ForwardingSampler::getVolume(PelkContext& context) {
    return bsdf->getVolume(context);
}

void ForwardingSampler::traceForward(PelkContext& context, int doDiffuse) {
    brdf->traceForward(context, doDiffuse);
}

Color ForwardingSampler::getDiffuseColor(Color& lightColor) {
    return brdf->getDiffuseColor(lightColor);
}

Vector ForwardingSampler::getDiffuseNormal(PelkContext& context) {
    return brdf->getDiffuseNormal(context);
}

Color ForwardingSampler::getLightMult(Color& lightColor) {
    return brdf->getLightMult(lightColor);
}

Color ForwardingSampler::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                              Color& origLightColor, float probLight, int flags) {
    return brdf->eval(context, direction, lightColor, origLightColor, probLight, flags);
}

void ForwardingSampler::multiplyLight(float factor) {
    brdf->multiplyLight(factor);
}

void ForwardingSampler::lightFinished(int light) {
    brdf->lightFinished(light);
}

int ForwardingSampler::getUseIrradianceMap() {
    return brdf->getUseIrradianceMap();
}

int ForwardingSampler::getNumSamples(PelkContext& context, int doDiffuse) {
    return brdf->getNumSamples(context, doDiffuse);
}

Color ForwardingSampler::getTransparency(PelkContext& context) {
    return brdf->getTransparency(context);
}

Color ForwardingSampler::getColor(PelkContext& context, Color color) {
    return brdf->getColor(context, color);
}

Color ForwardingSampler::getAlpha(PelkContext& context, Color alpha) {
    return brdf->getAlpha(context, alpha);
}

PelkContext* ForwardingSampler::getNewContext(PelkContext& context, int& sampler, int doDiffuse) {
    return brdf->getNewContext(context, sampler, doDiffuse);
}

float ForwardingSampler::setupContext(PelkContext& context, PelkContext& newContext, float random,
                                      int sample) {
    return brdf->setupContext(context, newContext, random, sample);
}

RenderChannelsInfo* ForwardingSampler::getRenderChannels() {
    return brdf->getRenderChannels();
}

int ForwardingSampler::getNumSubBRDFs() {
    return brdf ? brdf->getNumSubBRDFs() : 0;
}

BRDFSampler* ForwardingSampler::getSubBRDF(int index, Color& weight) {
    return brdf ? brdf->getSubBRDF(index, weight) : nullptr;
}

Color ForwardingSampler::getSelfIllumination(PelkContext& context) {
    return brdf ? brdf->getSelfIllumination(context) : Color(0);
}

}  // namespace Tarnkit
