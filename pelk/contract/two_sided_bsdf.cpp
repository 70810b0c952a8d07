#include "pelk/contract/two_sided_bsdf.h"

#include "pelk/contract/context.h"
#include "pelk/contract/private/indirect_light.h"
#include "pelk/contract/private/noted_rays.h"

namespace Tarnkit {

/// The context in the state in which a side's sampler was made, until the scope ends. By its
/// present side: someone around this sampler may have turned it since.
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

/// `lookingAt`: the side that the viewer sees is wanted, else the one that looks away.
void TwoSidedBSDF::Side::findFace(bool lookingAt) {
    const BSDFSide side = backSide == lookingAt ? kBackSide : kFrontSide;
    face = bsdf ? resolveBRDF(side, bsdf) : nullptr;
}

Color TwoSidedBSDF::Side::transparency(PelkContext& context) const {
    if (!face)
        return Color(1);
    const AsMade state(context, *this);
    return face->getTransparency(context);
}

void TwoSidedBSDF::init(PelkContext& context, const Color& translucency, BSDFSampler* first,
                        BSDFSampler* second, int multByFrontDiffuse, const Color& clear) {
    near = {.bsdf = first, .backSide = context.backSide && context.flippedSide};
    far = {.bsdf = second, .backSide = !near.backSide};
    nearShare = complement(translucency);
    farShare = farFilter = translucency;
    clearShare = clear;
    for (Face& face : faces)
        face.owner = this;
    if (!multByFrontDiffuse)
        return;
    near.findFace(true);
    if (near.face) {
        Color white(1);
        farFilter *= near.face->getDiffuseColor(white);
    }
}

BRDFSampler* TwoSidedBSDF::getBRDF(BSDFSide side) {
    near.findFace(true);
    // Light from beyond falls on the side of the second sampler that looks away from the viewer.
    far.findFace(false);
    if (!near.face && !far.face)
        return nullptr;
    return &faces[farFilter != Color(0) ? side : kFrontSide];
}

PelkVolume* TwoSidedBSDF::getVolume(PelkContext& context) {
    for (const Side& side : {near, far}) {
        const AsMade state(context, side);
        if (PelkVolume* volume = side.bsdf ? side.bsdf->getVolume(context) : nullptr)
            return volume;
    }
    return nullptr;
}

/// Indirect light and glow of the side beyond, as the base of samplers traces them. Reflections
/// of that side are not seen from here.
Color TwoSidedBSDF::lightFromBeyond(PelkContext& context, int doDiffuse) const {
    if (!far.face || farFilter == Color(0))
        return Color(0);
    const ScopedValue weight(context.rayWeight, context.rayWeight * farFilter);
    Color light = glowFromBeyond(context);
    if (!doDiffuse)
        return light;
    const AsMade state(context, far);
    Color white(1);
    const Color diffuse =
        complement(far.face->getTransparency(context)) * far.face->getDiffuseColor(white);
    if (diffuse != Color(0)) {
        const ScopedValue beyond(context.gathersBeyond, 1);
        light += diffuse * gatherIrradiance(context, *far.face);
    }
    return light;
}

Color TwoSidedBSDF::glowFromBeyond(PelkContext& context) const {
    const AsMade state(context, far);
    return far.face->getSelfIllumination(context);
}

Color TwoSidedBSDF::Face::getDiffuseColor(Color& lightColor) {
    BRDFSampler* face = owner->near.face;
    return face ? owner->nearShare * face->getDiffuseColor(lightColor) : Color(0);
}

Color TwoSidedBSDF::Face::getLightMult(Color& lightColor) {
    BRDFSampler* face = owner->near.face;
    return face ? owner->nearShare * face->getLightMult(lightColor) : Color(0);
}

Color TwoSidedBSDF::Face::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                               Color& origLightColor, float probLight, int flags) {
    const bool isNear = (dot(context.geomNormal, direction) > 0.0f) != (context.backSide != 0);
    const Side& side = isNear ? owner->near : owner->far;
    if (!side.face)
        return Color(0);
    const AsMade state(context, side);
    const ScopedValue normal(context.normal, side.face->getDiffuseNormal(context));
    const ScopedValue through(context.resultTransparency, side.face->getTransparency(context));
    // A highlight of the side beyond would lie on the far side of the surface.
    const ScopedValue type(context.rayType, context.rayType | (isNear ? 0u : u32{kRayNoSpecular}));
    const Color share = isNear ? owner->nearShare : owner->farFilter;
    return share * side.face->eval(context, direction, lightColor, origLightColor, probLight,
                                   isNear ? flags : flags & ~kEvalSpecular);
}

void TwoSidedBSDF::Face::multiplyLight(float factor) {
    for (const Side& side : {owner->near, owner->far}) {
        if (side.face)
            side.face->multiplyLight(factor);
    }
}

void TwoSidedBSDF::Face::lightFinished(int light) {
    for (const Side& side : {owner->near, owner->far}) {
        if (side.face)
            side.face->lightFinished(light);
    }
}

void TwoSidedBSDF::Face::traceForward(PelkContext& context, int doDiffuse) {
    Color color;
    if (owner->near.face && owner->nearShare != Color(0)) {
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

Color TwoSidedBSDF::Face::getTransparency(PelkContext& context) {
    Color through = owner->clearShare + owner->nearShare * owner->near.transparency(context);
    if (owner->farShare != Color(0))
        through += owner->farShare * owner->far.transparency(context);
    return minimum(through, Color(1));
}

Color TwoSidedBSDF::Face::getSelfIllumination(PelkContext& context) {
    Color light;
    if (owner->near.face) {
        const AsMade state(context, owner->near);
        light = owner->nearShare * owner->near.face->getSelfIllumination(context);
    }
    if (owner->far.face)
        light += owner->farFilter * owner->glowFromBeyond(context);
    return light;
}

}  // namespace Tarnkit
