#include "pelk/contract/context.h"

#include "pelk/contract/samplers.h"
#include "pelk/contract/shading.h"

namespace Tarnkit {

PelkContext::~PelkContext() = default;

void PelkContext::releaseContext() {}

PelkContext* PelkContext::newSpawnedContext(int, const Color&, u32, const Vector&) {
    return nullptr;
}

void PelkContext::computeDirectLighting(Color& out, BSDFSampler*) {
    out = Color(0);
}

PelkVolume* PelkContext::currentVolume(PelkVolume*) {
    return nullptr;
}

void PelkContext::flipSide() {
    faceNormal = -faceNormal;
    normal = -normal;
    geomNormal = -geomNormal;
    flippedSide = flippedSide ? 0 : 1;
    backSide = backSide ? 0 : 1;
}

void PelkContext::setEnvironment(TextureInterface* texture, int priority, int) {
    if (!texture || priority < environmentPriority)
        return;
    environment = texture;
    environmentPriority = priority;
}

void PelkContext::shadeWithBSDF(BSDFSampler* bsdf, int flag) {
    if (!bsdf)
        return setFullyTransparent(*this);
    // The sampler fails in the name of who gave it.
    PluginCall& call = threadData->call;
    const PluginCall outer = call;
    call = {"traceBSDFForward", threadData->giverOf(bsdf)};
    Color direct;
    computeDirectLighting(direct, bsdf);
    bsdf->traceBSDFForward(*this, flag);
    call = outer;
    resultColor += direct;
}

void shadeBSDF(PelkContext& context, BSDFSampler* bsdf) {
    if (!bsdf)
        return setFullyTransparent(context);
    ScopedVolume volume(context);
    volume.show(*bsdf);
    if (context.rayType & kRayShadow)
        setFilterResults(context, bsdf->getBSDFTransparency(context));
    else
        context.shadeWithBSDF(bsdf, kAllIndirect);
    volume.keepIfTransparent();
}

void setReflectDerivs(PelkContext& context, PelkContext& newContext, const Vector& direction, int,
                      float limit) {
    const Vector axis = normalizeGuarded(direction - context.rayDir, limit);
    newContext.rayDerivX = mirrored(context.rayDerivX, axis);
    newContext.rayDerivY = mirrored(context.rayDerivY, axis);
}

}  // namespace Tarnkit
