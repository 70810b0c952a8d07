#pragma once

// Steps that several materials take at a hit in the same way.

#include <algorithm>

#include "pelk/base/api.h"
#include "pelk/contract/context.h"
#include "pelk/contract/pelk_material.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// A colour parameter with a texture over it. `multiplier` weights the texture over `color`;
/// below 1e-12 the texture is not read. The texture covers by its alpha, clamped to 0 to 1, but
/// its colour comes unscaled by it. It is read with rayWeight times the multiplier.
inline Color textureBlend(PelkContext& context, Color color, TextureInterface* texture,
                          float multiplier) {
    if (!texture || multiplier < 1e-12f)
        return color;
    const ScopedValue weight(context.rayWeight, context.rayWeight * multiplier);
    const AColor value = texture->getTexColor(context);
    const float cover = std::clamp(value.alpha, 0.0f, 1.0f) * multiplier;
    return color * (1.0f - cover) + value.color * multiplier;
}

/// The direction in which a mirror at the hit sends the ray. A shading normal that leans far from
/// the geometry would send it through the surface; the geometric normal is taken then.
inline Vector mirrorDirection(const PelkContext& context) {
    const Vector d = context.rayDir, g = context.geomNormal;
    const Vector r = mirrored(d, context.normal);
    // In double: near the silhouette both dot products are tiny, and only their signs count.
    const float sameSide = -dotDouble(d, g) * dotDouble(r, g);
    return sameSide < 0.0f ? mirrored(d, g) : r;
}

/// A sampler of a plug-in, for the length of a scope; null if the plug-in gives none.
class ScopedSampler {
public:
    ScopedSampler(PelkContext& context_, BSDFInterface& owner_, int flags)
        : context(context_), owner(owner_), sampler(owner_.getBSDF(context_, flags)) {}
    ~ScopedSampler() {
        if (sampler)
            owner.releaseBSDF(context, sampler);
    }
    ScopedSampler(const ScopedSampler&) = delete;
    ScopedSampler& operator=(const ScopedSampler&) = delete;

    BSDFSampler* get() const { return sampler; }

private:
    PelkContext& context;
    BSDFInterface& owner;
    BSDFSampler* const sampler;
};

/// A spawned context, for the length of a scope; null if the host spawns none.
class ScopedRay {
public:
    explicit ScopedRay(PelkContext* spawned) : context(spawned) {}
    ~ScopedRay() {
        if (context)
            context->releaseContext();
    }
    ScopedRay(const ScopedRay&) = delete;
    ScopedRay& operator=(const ScopedRay&) = delete;

    explicit operator bool() const { return context; }
    PelkContext* operator->() const { return context; }
    PelkContext& operator*() const { return *context; }

private:
    PelkContext* const context;
};

/// Makes the ray of `newContext` the mirror ray of the hit, which leaves along `r`, with the
/// derivatives of the direction mirrored along `h`, the unit vector from the ray's direction to r.
inline void setMirrorRay(const PelkContext& context, PelkContext& newContext, Vector r, Vector h) {
    newContext.rayDerivX = mirrored(context.rayDerivX, h);
    newContext.rayDerivY = mirrored(context.rayDerivY, h);
    newContext.rayDir = newContext.rayDir2 = r;
    newContext.rayOrigin = context.hitPoint;
    newContext.rayMinT = 0.0;
    newContext.rayMaxT = kRayFar;
}

/// The same, with that vector made unit by multiplying with 1 / length.
inline void setMirrorRay(const PelkContext& context, PelkContext& newContext, Vector r) {
    setMirrorRay(context, newContext, r, normalizeGuarded(r - context.rayDir));
}

/// The index of the channel behind a plug-in; -1 if there is no plug-in or it is no channel.
inline int findChannelIndex(PluginBase* plugin) {
    auto* channel = findInterface<RenderChannelInterface>(plugin);
    return channel ? channel->getChannelIndex() : -1;
}

/// The flags by which a plug-in tells whether it is opaque; 0 if there is none or it doesn't tell.
inline int opaqueFlagsOf(PluginBase* plugin) {
    auto* opaque = findInterface<OpaqueShadeableInterface>(plugin);
    return opaque ? opaque->getOpaqueFlags() : 0;
}

/// The name of an instance in a message: empty if it has none.
inline const char* messageName(const Plugin& plugin) {
    const char* name = plugin.getPluginName();
    return name ? name : "";
}

/// Replaces the channels of the hit's colour that are not finite by 0, the negative ones too unless
/// they are allowed. A colour that needed it is reported with the name of the material; `warned` is
/// shared by all threads and keeps the report from coming again.
PELK_API void repairResultColor(PelkContext& context, const Plugin& material, bool allowNegative,
                                int& warned);

}  // namespace Tarnkit
