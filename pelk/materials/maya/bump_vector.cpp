#include "pelk/materials/maya/bump_vector.h"

#include <algorithm>

namespace Tarnkit {
namespace {

/// The height of the map over the surface at the hit, from 0 for black to 1 for white.
float heightAtHit(const BumpParams& params, PelkContext& context) {
    if (params.colorTex)
        return mean(params.colorTex->getTexColor(context).color);
    return params.floatTex ? params.floatTex->getTexFloat(context) : 0.0f;
}

Vector bumpOfHeight(const BumpParams& params, PelkContext& context) {
    if (params.colorTex)
        return getAutoBump(context, params.colorTex, 0, params.deltaScale);
    return params.floatTex ? getAutoBump(context, params.floatTex, 0, params.deltaScale) : Vector();
}

Vector bumpOfTexture(const BumpParams& params, PelkContext& context) {
    if (params.colorTex)
        return params.colorTex->getTexBump(context);
    return params.floatTex ? params.floatTex->getTexBump(context) : Vector();
}

/// The map from world space to tangent space at the hit. False if there is none.
bool findTangentFrame(const BumpParams& params, PelkContext& context, Transform& frame) {
    // Tells a texture or generator what it is read for. The old value comes back and not just the
    // bit off: a parent may have set it.
    const ScopedValue rayType(context.rayType, context.rayType | kRayTangentFrame);
    if (auto* uvwgen = findInterface<UVWGenInterface>(params.normalUvwgen)) {
        int valid = 0;
        frame = uvwgen->getTangentFrame(context, valid);
        return valid != 0;
    }
    auto* surface = findInterface<SurfaceFrameInterface>(context.hitObject);
    if (surface)
        frame = surface->getSurfaceFrame(context, -1);
    return surface != nullptr;
}

/// Per component divided, not multiplied by a reciprocal: the two round apart.
Vector divided(Vector v, float by) {
    return {v.x / by, v.y / by, v.z / by};
}

/// The bump of a normal map in tangent space, whose vector at the hit is `map`.
Vector bumpOfTangentSpace(const BumpParams& params, PelkContext& context, Vector map,
                          float strength) {
    Transform frame;
    if (!findTangentFrame(params, context, frame))
        return map;
    const Vector u = frame.axisX, v = frame.axisY, w = frame.axisZ;
    const float volume = dot(cross(u, v), w);
    if (volume == 0.0f)
        return {};
    // The rows of the inverse. Its columns are the directions in world space in which u, v and the
    // distance from the surface grow. Unit, as how densely a texture lies on the surface must not
    // change how steep its bumps are.
    const Vector rowX = divided(cross(v, w), volume), rowY = divided(cross(w, u), volume),
                 rowZ = divided(cross(u, v), volume);
    const Vector tangent = normalizeGuarded({rowX.x, rowY.x, rowZ.x});
    const Vector bitangent = normalizeGuarded({rowX.y, rowY.y, rowZ.y});
    Vector normal = normalizeGuarded({rowX.z, rowY.z, rowZ.z});
    const bool seenFromBehind = params.mayaCompatible && context.backSide;
    if (seenFromBehind)
        normal = -normal;
    map = normalizeGuarded(map);
    // What the map adds to the normal: its straight up adds nothing.
    Vector bump = (map.x * tangent + map.y * bitangent + (map.z - 1.0f) * normal) * strength;
    if (params.mayaCompatible && dot({u.z, v.z, w.z}, context.normal) < 0.0f)
        bump = -bump;
    return seenFromBehind ? -bump : bump;
}

/// The bump of a normal map whose vector at the hit, in world space, is `map`: the way from the
/// surface's own normal to the map's.
Vector bumpTowards(const PelkContext& context, Vector map, float strength) {
    const float len = length(map);
    // Middle grey in all channels says nothing of a direction, and leaves the normal as it is.
    if (len == 0.0f)
        return {};
    const Vector normal = context.flippedSide ? -context.normal : context.normal;
    return (map * (1.0f / len) - normal) * strength;
}

Vector objectToWorld(PelkContext& context, Vector vector) {
    auto* mapping = findInterface<ObjectMappingInterface>(context.hitMapping);
    return mapping ? mapping->objectToWorld(context, vector) : vector;
}

Vector cameraToWorld(const PelkContext& context, Vector v) {
    const Vector* axes = context.renderer->frameData.cameraMatrix;
    return axes[0] * v.x + axes[1] * v.y + axes[2] * v.z;
}

Vector bumpOfNormalMap(const BumpParams& params, PelkContext& context, float strength) {
    if (!params.colorTex || strength == 0.0f)
        return {};
    const Color value = params.colorTex->getTexColor(context).color;
    if (params.mapType == kBumpExplicit)
        return {value.r, value.g, value.b};
    // Images hold -1 to 1 as 0 to 1.
    const Color decoded = value + (value - Color(1));
    const Vector map = {decoded.r, decoded.g, decoded.b};
    switch (params.mapType) {
        case kBumpTangentSpace:
            return bumpOfTangentSpace(params, context, map, strength);
        case kBumpObjectSpace:
            return bumpTowards(context, objectToWorld(context, map), strength);
        case kBumpCameraSpace:
            return bumpTowards(context, cameraToWorld(context, map), strength);
        default:
            return bumpTowards(context, map, strength);
    }
}

bool wantsBump(const BumpParams& params, const PelkContext& context) {
    if ((context.rayType & kRayShadow) && !params.bumpForShadows)
        return false;
    return context.giDepth <= 0 || (context.rayType & kRayGiBump);
}

}  // namespace

bool computeBump(const BumpParams& params, PelkContext& context, Vector& bump, Vector& offset) {
    bump = offset = Vector();
    if (!wantsBump(params, context))
        return false;
    float strength = params.bumpMult;
    if (params.multTex)
        strength *= params.multTex->getTexFloat(context);
    switch (params.mapType) {
        case kBumpHeight:
            bump = bumpOfHeight(params, context) * strength;
            // Towards the viewer and not along the normal, so that the point stays in its pixel.
            if (params.bumpShadows)
                offset = -context.rayDir * std::max(0.0f, strength * heightAtHit(params, context));
            return true;
        case kBumpOfTexture:
            bump = bumpOfTexture(params, context) * strength;
            return true;
        default:
            bump = bumpOfNormalMap(params, context, strength);
            return true;
    }
}

Vector applyBump(Vector normal, int mode, Vector bump, int flippedSide) {
    if (mode == kBumpNone)
        return normal;
    const Vector turned = flippedSide ? -bump : bump;
    if (mode == kBumpExplicit)
        return turned;
    if (mode != kBumpHeight)
        return normalizeGuarded(normal + turned);
    // A cross product, as getAutoBump answers with one: normal x (normal x gradient) is minus the
    // gradient, so a slope leans the normal downhill.
    const float len = length(normal);
    const Vector bumped = normal + cross(normal, turned);
    const float bumpedLength = length(bumped);
    return bumpedLength > 1e-6f ? divided(bumped * len, bumpedLength) : normal;
}

}  // namespace Tarnkit
