#include "pelk/materials/maya/bump_brdf_sampler.h"

namespace Tarnkit {
namespace {

/// The bumped normal as the picture shows it, unit: its shares along the two ray differentials of
/// the pixel and along the ray, by Cramer's rule but for the common factor, which making it unit
/// takes out.
Vector screenNormal(const PelkContext& context) {
    const Vector right = normalizeGuarded(context.rayDerivX + context.originDerivX);
    const Vector down = normalizeGuarded(context.rayDerivY + context.originDerivY);
    const Vector n = -context.normal;
    return normalizeGuarded({dot(cross(n, down), context.rayDir),
                             dot(cross(right, n), context.rayDir), dot(cross(right, down), n)});
}

/// Enters the bump in the channels, from the context's normal as the base has left it.
void writeChannels(PelkContext& context, Vector smoothNormal) {
    Fragment* fragment = context.resultFragment;
    if (!fragment)
        return;
    // Asked first, so that a hit without these channels pays for no arithmetic.
    if (fragment->getAliasPtr(kAliasBumpScreenNormal)) {
        const Vector seen = screenNormal(context);
        fragment->addAlias(kAliasBumpScreenNormal, &seen);
    }
    if (fragment->getAliasPtr(kAliasBumpOffset)) {
        const Vector moved = context.normal - smoothNormal;
        const Vector ofSurface = context.flippedSide ? -moved : moved;
        fragment->addAlias(kAliasBumpOffset, &ofSurface);
    }
}

}  // namespace

Vector BumpBRDFSampler::getDiffuseNormal(PelkContext& context) {
    if (mode == kBumpExplicit)
        return bumped(context, Vector());
    return bumped(context, ForwardingSampler::getDiffuseNormal(context));
}

void BumpBRDFSampler::traceForward(PelkContext& context, int doDiffuse) {
    const Vector smoothNormal = context.normal;
    const ScopedValue normal(context.normal, bumped(context, smoothNormal));
    const ScopedValue hitPoint(context.hitPoint, movedPoint(context));
    ForwardingSampler::traceForward(context, doDiffuse);
    writeChannels(context, smoothNormal);
}

Vector BumpBRDFSampler::bumped(const PelkContext& context, Vector normal) const {
    return applyBump(normal, mode, bump, context.flippedSide);
}

Point BumpBRDFSampler::movedPoint(const PelkContext& context) const {
    if (mode != kBumpHeight)
        return context.hitPoint;
    return context.hitPoint + (context.backSide == createdBackSide ? offset : -offset);
}

}  // namespace Tarnkit
