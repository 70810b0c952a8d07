#pragma once

// Steps that several materials take at a hit in the same way: textured colours, mirror rays,
// calls of other materials, samplers and spawned contexts that go back by themselves, and the check
// of the result. For
// materials and samplers, on the render thread of the hit; nothing here allocates.

#include <algorithm>
#include <exception>
#include <utility>

#include "pelk/base/api.h"
#include "pelk/contract/context.h"
#include "pelk/contract/pelk_material.h"
#include "pelk/contract/samplers.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// A colour parameter with a texture composited over it. `texture` may be null. `multiplier`: the
/// strength of the texture, 0 to 1 for a blend; below 1e-12 the texture is not read. The answer is
/// color * (1 - a) + texture * multiplier, with a = multiplier times the texture's alpha, limited
/// to 0 to 1: the colour of a texture is taken as premultiplied by its alpha, and so is not scaled
/// by it again. The texture is read with rayWeight times the multiplier, as one that traces rays
/// (ambient occlusion, say) may spare them where little shows. May throw an ExceptionMsg.
inline Color textureBlend(PelkContext& context, Color color, TextureInterface* texture,
                          float multiplier) {
    if (!texture || multiplier < 1e-12f)
        return color;
    // Put back also when the texture throws.
    const ScopedValue weight(context.rayWeight, context.rayWeight * multiplier);
    // An alpha outside 0 to 1 would make the colour below brighter, or negative. The texture's own
    // colour may be anything: above 1 it is light.
    const AColor value = texture->getTexColor(context);
    const float cover = std::clamp(value.alpha, 0.0f, 1.0f) * multiplier;
    return color * (1.0f - cover) + value.color * multiplier;
}

/// The unit direction in which a mirror at the hit sends the ray: rayDir mirrored at the shading
/// normal, or at the geometric normal where the first would lead through the surface, as it does
/// near silhouettes if the two normals differ much. Works on either side of the surface.
inline Vector mirrorDirection(const PelkContext& context) {
    const Vector d = context.rayDir, g = context.geomNormal;
    const Vector r = mirrored(d, context.normal);
    // Both directions must point away from the surface on one side: incoming reversed, and
    // mirrored. In double: near the silhouette both dot products are tiny, and only their signs
    // count.
    const float sameSide = -dotDouble(d, g) * dotDouble(r, g);
    return sameSide < 0.0f ? mirrored(d, g) : r;
}

/// `shade` of another material at the same hit, for wrappers. It and the two below note the call in
/// the thread's record first (PluginCall): a host can then name the instance that has failed, which
/// without the note would be the wrapper.
inline void callShade(MaterialInterface& material, PelkContext& context) {
    PluginCall& call = context.threadData->call;
    const PluginCall outer = call;
    call = {"shade", &material};
    material.shade(context);
    call = outer;
}

/// The same for getBSDF. ScopedSampler does it where the sampler goes back in the same scope.
inline BSDFSampler* takeSampler(BSDFInterface& owner, PelkContext& context, int flags) {
    ThreadData& thread = *context.threadData;
    const PluginCall outer = thread.call;
    thread.call = {"getBSDF", &owner};
    BSDFSampler* const sampler = owner.getBSDF(context, flags);
    thread.call = outer;
    // A wrapper may hand on what another one gave: that one is who made it.
    if (sampler != thread.givenSampler) {
        thread.givenSampler = sampler;
        thread.samplerGiver = &owner;
    }
    return sampler;
}

/// The same for releaseBSDF; a null sampler is passed on.
inline void giveSampler(BSDFInterface& owner, PelkContext& context, BSDFSampler* sampler) {
    PluginCall& call = context.threadData->call;
    const PluginCall outer = call;
    call = {"releaseBSDF", &owner};
    owner.releaseBSDF(context, sampler);
    call = outer;
}

/// A sampler of a plug-in, for the length of a scope: getBSDF in the constructor, releaseBSDF in
/// the destructor, on whatever way the scope is left. A sampler that isn't released is lost to its
/// pool until the render ends. `get` is null if the plug-in gives none; the surface is fully
/// transparent then. `owner`: the interface that is asked, and gets the sampler back. `flags`:
/// kSingleSided or 0. The constructor may throw an ExceptionMsg, and holds nothing then.
///
///     const ScopedSampler sampler(context, *base, kSingleSided);
///     if (!sampler.get())
///         return setFullyTransparent(context);
///     shadeBSDF(context, sampler.get());
class ScopedSampler {
public:
    /// Asks `owner` for a sampler; `flags` as in BSDFInterface::getBSDF, which may answer null.
    ScopedSampler(PelkContext& context_, BSDFInterface& owner_, int flags)
        : context(context_), owner(&owner_), sampler(takeSampler(owner_, context_, flags)) {}
    /// Takes over what `owner` has answered; both may be null.
    ScopedSampler(PelkContext& context_, BSDFInterface* owner_, BSDFSampler* answered)
        : context(context_), owner(owner_), sampler(answered) {}
    /// Throws what releaseBSDF throws, unless another exception is on its way: two at once would
    /// end the process.
    ~ScopedSampler() noexcept(false) {
        if (!sampler)
            return;
        const PluginCall outer = context.threadData->call;
        try {
            giveSampler(*owner, context, sampler);
        } catch (...) {
            if (std::uncaught_exceptions() == 0)
                throw;
            context.threadData->call = outer;  // of the first exception
        }
    }
    ScopedSampler(const ScopedSampler&) = delete;
    ScopedSampler& operator=(const ScopedSampler&) = delete;

    /// Valid as long as this object; null if there is none.
    BSDFSampler* get() const { return sampler; }
    /// The sampler, null included, from now on the caller's to give back to its plug-in. For a
    /// material that keeps it in a sampler of its own until that one is released.
    BSDFSampler* handOut() { return std::exchange(sampler, nullptr); }

private:
    PelkContext& context;        // releaseBSDF wants the one that getBSDF got
    BSDFInterface* const owner;  // as it wants the interface that gave it
    BSDFSampler* sampler;        // null if there is nothing to release
};

/// Publishes the sampler's interior medium in surfaceVolume while the hit is shaded, for refracted
/// rays that enter it: they take their index of refraction from there. If an outer material
/// (wrapper, layer stack) has set it already, that one stays. When the scope ends the field is as
/// it was, but after `keepIfTransparent` it stays for the host, which takes it for the medium that
/// a ray enters. Stands around the sampler whose volume it shows.
class ScopedVolume {
public:
    explicit ScopedVolume(PelkContext& context_) : context(context_) {}
    ~ScopedVolume() {
        if (isShown && !isKept)
            context.surfaceVolume = nullptr;
    }
    ScopedVolume(const ScopedVolume&) = delete;
    ScopedVolume& operator=(const ScopedVolume&) = delete;

    /// Asks the sampler, if the field is free. The answer may be null.
    void show(BSDFSampler& sampler) {
        if (context.surfaceVolume)
            return;
        isShown = true;
        context.surfaceVolume = sampler.getVolume(context);
    }
    /// Keeps the volume of a surface that lets light through by the results as they stand. What is
    /// opaque has no inside that a ray could enter.
    void keepIfTransparent() { isKept = !(mean(context.resultTransparency) < 1e-6f); }

private:
    PelkContext& context;
    bool isShown = false;
    bool isKept = false;
};

/// Fills the four results as a shadow ray asks for them: the surface is a filter in front of the
/// light and has no colour of its own. The alpha is what the filter keeps back, per channel.
inline void setFilterResults(PelkContext& context, Color transparency) {
    setResults(context, Color(0), transparency, complement(transparency), transparency);
}

/// A spawned context, for the length of a scope: takes the answer of newSpawnedContext or
/// BRDFSampler::getNewContext, and releases it in the destructor, so that none is lost to its
/// thread when tracing throws. It converts to false if the host spawned none; use it only after
/// that test, as PelkContext shows.
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
    PelkContext* const context;  // the spawned one, or null
};

/// Sets the ray of `newContext`, a context spawned at the hit of `context`: it starts at hitPoint,
/// leaves along the unit vector `r`, without a far end, and has the ray differentials of a mirror
/// reflection about `h`, the half vector r - rayDir made unit (setReflectDerivs says what they
/// leave out). For a refracted ray, overwrite the origin and the differentials then.
inline void setMirrorRay(const PelkContext& context, PelkContext& newContext, Vector r, Vector h) {
    newContext.rayDerivX = mirrored(context.rayDerivX, h);
    newContext.rayDerivY = mirrored(context.rayDerivY, h);
    // Both copies: hosts read either.
    newContext.rayDir = newContext.rayDir2 = r;
    newContext.rayOrigin = context.hitPoint;
    // From 0: the host doesn't find the triangle that a ray leaves, so no offset is needed.
    newContext.rayMinT = 0.0;
    newContext.rayMaxT = kRayFar;
}

/// The same with the half vector made here, by multiplying with 1 / length. Pictures keep the same
/// bits only if each caller stays with its form: a division rounds differently.
inline void setMirrorRay(const PelkContext& context, PelkContext& newContext, Vector r) {
    setMirrorRay(context, newContext, r, normalizeGuarded(r - context.rayDir));
}

/// The position in fragments of the render channel behind a plug-in; -1, which fragments ignore, if
/// `plugin` is null or no channel. For frameBegin: positions hold for the render, and a hit is
/// spared the look-up.
inline int findChannelIndex(PluginBase* plugin) {
    auto* channel = findInterface<RenderChannelInterface>(plugin);
    return channel ? channel->getChannelIndex() : -1;
}

/// Makes `indices` the indices of the channels in a list, in its order; what is no channel is left
/// out. Keeps the table's memory. For renderBegin: throws ExceptionMsg if there is no memory.
inline void listChannelIndices(const PelkPluginList& channels, GrowTable<int>& indices) {
    indices.clear();
    for (int i = 0; i < channels.count; ++i) {
        if (auto* channel = findInterface<RenderChannelInterface>(channels.items[i]))
            indices.append(channel->getChannelIndex());
    }
}

/// The answer of a plug-in's OpaqueShadeableInterface, or 0, "ask me", if `plugin` is null or
/// doesn't offer it. kOpaqueToShadows says that no hit on the surface lets light through, so that a
/// host may end shadow rays there without calling `shade`; a wrapper answers with what stands under
/// it, and a composite only if all of it agrees. kOpaqueTwoSided marks a material that is made of
/// two sides. Both are a hint alone, and known to miss partial visibility; `pelk` calls `shade` for
/// every shadow ray.
inline int opaqueFlagsOf(PluginBase* plugin) {
    auto* opaque = findInterface<OpaqueShadeableInterface>(plugin);
    return opaque ? opaque->getOpaqueFlags() : 0;
}

/// The last step of a `shade` that may go wrong: replaces the channels of resultColor that are not
/// finite by 0, the negative ones too unless `allowNegative`, so that one bad hit doesn't blacken
/// all the pixels that see it in reflections. Colours above 1 are fine.
///
/// The first colour of a frame that needed it is reported to the log with the material's name, as
/// it was. `warned`: the material's own flag, set to 0 in frameBegin; shared by all render threads
/// without a lock, and read and written as shared fields are, so that a second copy of the message
/// is the worst that can come of it. Doesn't throw.
PELK_API void repairResultColor(PelkContext& context, const Plugin& material, bool allowNegative,
                                int& warned);

}  // namespace Tarnkit
