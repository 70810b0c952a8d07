#pragma once

#include <algorithm>

#include "pelk/base/types.h"
#include "pelk/contract/context.h"
#include "pelk/host/trace/hidden_objects.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

class RenderThread;
struct SceneObject;

/// This host's context: a ray, the path that it belongs to, and its hit on a triangle. Contexts
/// come from a pool of their thread (RenderThread) and are not constructed anew, so whoever hands
/// one out writes every field that may be read before the hit writes it.
class RenderContext final : public PelkContext {
public:
    static constexpr u32 kNone = ~0u;
    static constexpr int kMaxVolumes = 8;
    /// Bits of rayType that rays spawned at the hit inherit: what kinds of bounce the path has had.
    static constexpr u32 kPathBits = kRayCamera | kRayReflect | kRayRefract | kRayGi;

    // The hit, for the plug-ins of this host.
    const SceneObject* object = nullptr;  ///< null where the ray hit no geometry
    u32 triangle = 0;                     ///< index in the object's mesh
    float baryU = 0.0f, baryV = 0.0f;     ///< barycentric, of the second and third vertex
    float hitDistance = 0.0f;
    Vector triangleNormal;        ///< unit: the triangle's own, whichever way the hit is turned
    int lightMis = -1;            ///< the hit's answer of usesLightMis, 0 or 1; -1: not asked yet
    bool diffuseIsBlack = false;  ///< the sampler that the light loop lit last has no diffuse part

    // The ray.
    u32 skipObject = kNone, skipTriangle = kNone;  ///< the triangle that the ray leaves, if any
    /// Probability density of the direction per solid angle, for the MIS weight of a light that the
    /// ray hits. Below 0: no MIS, lights count in full (camera rays, perfect mirrors).
    float bsdfDensity = -1.0f;
    bool isIndirectDiffuse = false;  ///< spawned by PathGi, not specular
    /// Of an indirect diffuse ray: factor of caustics at the hit that spawned it.
    float receiveCaustics = 1.0f;
    /// Of a shadow ray, written by what it crosses: a surface that refracts other rays has let it
    /// straight through (HostRenderer::shadowed).
    bool replacesRefraction = false;
    float resultScale = 1.0f;  ///< factor of traceResult; dims caustics behind mirrors and lenses
    HiddenObjects hidden;      ///< what the ray doesn't hit
    /// Of the path's random numbers: hashed from the pixel and the bounces so far.
    u32 pathSeed = 0;
    u32 sampleIndex = 0;  ///< number of the path in its pixel
    int numVolumes = 0;   ///< depth of the stack of media: surfaces entered and not left
    PelkVolume* volumes[kMaxVolumes];  // NOLINT: the stack, innermost last; null without a medium
    RenderContext* nextFree = nullptr;

    RenderThread& thread() const;
    /// Two random numbers in [0, 1) for a decision at the hit; `branch` counts the decisions of one
    /// use. Low-discrepancy (Owen-scrambled Sobol) up to the first diffuse bounce; behind it that
    /// no longer reduces noise, and independent numbers are cheaper.
    Random2 random(RandomUse use, u32 branch = 0) const {
        const u32 seed = pathSeed + branch * 0x9e3779b1u;
        return giDepth == 0 ? random2(seed, sampleIndex, use)
                            : independent2(seed, sampleIndex, use);
    }
    /// Whether the ray came to the hit from within the object, whichever way the hit is turned.
    bool isInside() const;
    /// How many of `volumes` are written: media nested deeper are counted only.
    int storedVolumes() const { return std::min(numVolumes, int{kMaxVolumes}); }
    /// Updates the stack of media for a ray refracted at the hit `from`: from the front it enters
    /// the surface's medium, from the back it leaves that one. Where objects overlap that need not
    /// be the innermost, and a medium that the ray never entered takes none off.
    void crossSurface(const RenderContext& from);

    void releaseContext() override;
    PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                   const Vector& direction) override;
    void computeDirectLighting(Color& out, BSDFSampler* sampler) override;
    PelkVolume* currentVolume(PelkVolume* skip) override;
};

/// The context as this host's own class. Safe for every context that reaches its plug-ins: all are
/// made by RenderThread.
inline RenderContext& hostContext(PelkContext& context) {
    return static_cast<RenderContext&>(context);
}
inline const RenderContext& hostContext(const PelkContext& context) {
    return static_cast<const RenderContext&>(context);
}

}  // namespace Tarnkit
