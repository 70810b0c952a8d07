#include "pelk/contract/context.h"

#include "pelk/contract/samplers.h"

namespace Tarnkit {
namespace {

/// A surface whose mean transparency is below this lets no ray into its volume.
constexpr float kOpaqueBelow = 1e-6f;

}  // namespace

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
    Color direct;
    computeDirectLighting(direct, bsdf);
    bsdf->traceBSDFForward(*this, flag);
    resultColor += direct;
}

void shadeBSDF(PelkContext& context, BSDFSampler* bsdf) {
    if (!bsdf)
        return setFullyTransparent(context);
    const bool ownVolume = context.surfaceVolume == nullptr;
    try {
        if (ownVolume)
            context.surfaceVolume = bsdf->getVolume(context);
        if (context.rayType & kRayShadow) {
            const Color transparency = bsdf->getBSDFTransparency(context);
            setResults(context, Color(0), transparency, complement(transparency), transparency);
        } else {
            context.shadeWithBSDF(bsdf, 1);
        }
    } catch (...) {
        // Out of memory: the hit is left as it was.
        if (ownVolume)
            context.surfaceVolume = nullptr;
        throw;
    }
    if (ownVolume && mean(context.resultTransparency) < kOpaqueBelow)
        context.surfaceVolume = nullptr;
}

void setReflectDerivs(PelkContext& context, PelkContext& newContext, const Vector& direction, int,
                      float limit) {
    const Vector axis = normalizeGuarded(direction - context.rayDir, limit);
    newContext.rayDerivX = mirrored(context.rayDerivX, axis);
    newContext.rayDerivY = mirrored(context.rayDerivY, axis);
}

}  // namespace Tarnkit
