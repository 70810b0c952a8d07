#include "pelk/contract/two_sided_bsdf.h"

#include "pelk/contract/context.h"
#include "pelk/contract/private/indirect_light.h"
#include "pelk/contract/private/noted_rays.h"

namespace Tarnkit {

/// The context in the state in which a side's sampler was made, until the scope ends. Goes by how
/// the hit lies now, as a wrapper around this sampler may have turned it since.
class TwoSidedBSDF::AsMade {
public:
    AsMade(PelkContext& context, const Side& side)
        : flippedSide(context.flippedSide, context.flippedSide),
          flip(context, (context.backSide != 0) != side.backSide) {
        context.flippedSide = 0;
    }

private:
    ScopedValue<int> flippedSide;  // put back last: the flip toggles it
    ScopedFlip flip;
};

/// Looks up the sampler's BRDF for the side that faces the viewer, or for the one that faces away.
/// Where the viewer was on the back when the sampler was made, its back is what faces the viewer.
void TwoSidedBSDF::Side::findBRDF(bool facesViewer) {
    const BSDFSide side = backSide == facesViewer ? kBackSide : kFrontSide;
    brdf = bsdf ? resolveBRDF(side, bsdf) : nullptr;
}

Color TwoSidedBSDF::Side::transparency(PelkContext& context) const {
    if (!brdf)
        return Color(1);
    const AsMade state(context, *this);
    return brdf->getTransparency(context);
}

void TwoSidedBSDF::init(PelkContext& context, const Color& translucency, BSDFSampler* first,
                        BSDFSampler* second, int multByFrontDiffuse, const Color& clear) {
    near = {.bsdf = first, .backSide = context.backSide && context.flippedSide};
    far = {.bsdf = second, .backSide = !near.backSide};
    nearShare = complement(translucency);
    farShare = farFilter = translucency;
    clearShare = clear;
    for (SideBRDF& brdf : brdfs)
        brdf.owner = this;
    if (!multByFrontDiffuse)
        return;
    near.findBRDF(true);
    if (near.brdf) {
        Color white(1);
        farFilter *= near.brdf->getDiffuseColor(white);
    }
}

BRDFSampler* TwoSidedBSDF::getBRDF(BSDFSide side) {
    near.findBRDF(true);
    // Light from beyond falls on the side of the second sampler that faces away from the viewer.
    far.findBRDF(false);
    if (!near.brdf && !far.brdf)
        return nullptr;
    return &brdfs[farFilter != Color(0) ? side : kFrontSide];
}

PelkVolume* TwoSidedBSDF::getVolume(PelkContext& context) {
    for (const Side& side : {near, far}) {
        const AsMade state(context, side);
        if (PelkVolume* volume = side.bsdf ? side.bsdf->getVolume(context) : nullptr)
            return volume;
    }
    return nullptr;
}

/// Indirect light and self-illumination of the side beyond, as BRDFSampler::traceForward finds
/// them. Its own rays are left out: a reflection on that side is not seen through the surface.
Color TwoSidedBSDF::lightFromBeyond(PelkContext& context, int doDiffuse) const {
    if (!far.brdf || farFilter == Color(0))
        return Color(0);
    const ScopedValue weight(context.rayWeight, context.rayWeight * farFilter);
    Color light = glowFromBeyond(context);
    if (doDiffuse == kWithoutIndirectDiffuse)
        return light;
    const AsMade state(context, far);
    Color white(1);
    const Color diffuse =
        complement(far.brdf->getTransparency(context)) * far.brdf->getDiffuseColor(white);
    if (diffuse != Color(0)) {
        const ScopedValue beyond(context.gathersBeyond, 1);
        light += diffuse * gatherIrradiance(context, *far.brdf);
    }
    return light;
}

Color TwoSidedBSDF::glowFromBeyond(PelkContext& context) const {
    const AsMade state(context, far);
    return far.brdf->getSelfIllumination(context);
}

Color TwoSidedBSDF::SideBRDF::getDiffuseColor(Color& lightColor) {
    BRDFSampler* brdf = owner->near.brdf;
    return brdf ? owner->nearShare * brdf->getDiffuseColor(lightColor) : Color(0);
}

Color TwoSidedBSDF::SideBRDF::getLightMult(Color& lightColor) {
    BRDFSampler* brdf = owner->near.brdf;
    return brdf ? owner->nearShare * brdf->getLightMult(lightColor) : Color(0);
}

Color TwoSidedBSDF::SideBRDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                                   Color& origLightColor, float probLight, int flags) {
    const bool isNear = (dot(context.geomNormal, direction) > 0.0f) != (context.backSide != 0);
    const Side& side = isNear ? owner->near : owner->far;
    if (!side.brdf)
        return Color(0);
    const AsMade state(context, side);
    const ScopedValue normal(context.normal, side.brdf->getDiffuseNormal(context));
    const ScopedValue through(context.resultTransparency, side.brdf->getTransparency(context));
    // A highlight of the side beyond lies on the far side of the surface; only diffuse light shows.
    const ScopedValue type(context.rayType, context.rayType | (isNear ? 0u : u32{kRayNoSpecular}));
    const Color share = isNear ? owner->nearShare : owner->farFilter;
    return share * side.brdf->eval(context, direction, lightColor, origLightColor, probLight,
                                   isNear ? flags : flags & ~kEvalSpecular);
}

void TwoSidedBSDF::SideBRDF::multiplyLight(float factor) {
    for (const Side& side : {owner->near, owner->far}) {
        if (side.brdf)
            side.brdf->multiplyLight(factor);
    }
}

void TwoSidedBSDF::SideBRDF::lightFinished(int light) {
    for (const Side& side : {owner->near, owner->far}) {
        if (side.brdf)
            side.brdf->lightFinished(light);
    }
}

void TwoSidedBSDF::SideBRDF::traceForward(PelkContext& context, int doDiffuse) {
    Color color;
    if (owner->near.brdf && owner->nearShare != Color(0)) {
        const AsMade state(context, owner->near);
        const ScopedValue weight(context.rayWeight, context.rayWeight * owner->nearShare);
        NotedRays noted(context.resultFragment);
        owner->near.bsdf->traceBSDFForward(context, doDiffuse);
        noted.take(owner->nearShare);
        noted.write();
        color = owner->nearShare * context.resultColor;
    }
    color += owner->farFilter * owner->lightFromBeyond(context, doDiffuse);
    const Color through = getTransparency(context);
    setResults(context, color, through, complement(through), through);
}

Color TwoSidedBSDF::SideBRDF::getTransparency(PelkContext& context) {
    Color through = owner->clearShare + owner->nearShare * owner->near.transparency(context);
    if (owner->farShare != Color(0))
        through += owner->farShare * owner->far.transparency(context);
    return minimum(through, Color(1));
}

Color TwoSidedBSDF::SideBRDF::getSelfIllumination(PelkContext& context) {
    Color light;
    if (owner->near.brdf) {
        const AsMade state(context, owner->near);
        light = owner->nearShare * owner->near.brdf->getSelfIllumination(context);
    }
    if (owner->far.brdf)
        light += owner->farFilter * owner->glowFromBeyond(context);
    return light;
}

}  // namespace Tarnkit
