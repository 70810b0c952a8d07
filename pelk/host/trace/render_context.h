#pragma once

#include <algorithm>

#include "pelk/base/types.h"
#include "pelk/contract/context.h"
#include "pelk/host/trace/hidden_objects.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

class RenderThread;
struct SceneObject;

/// This host's context: a ray and its hit on a triangle. Contexts come from a pool of their thread
/// and are not made anew: who hands one out writes every field that is read before it is written.
class RenderContext final : public PelkContext {
public:
    static constexpr u32 kNone = ~0u;
    static constexpr int kMaxVolumes = 8;
    /// Bits of rayType that a ray hands on to the rays that spring from its hit.
    static constexpr u32 kPathBits = kRayCamera | kRayReflect | kRayRefract | kRayGi;

    // The hit, for the plug-ins of this host.
    const SceneObject* object = nullptr;  ///< null where the ray hit no geometry
    u32 triangle = 0;                     ///< index in the object's mesh
    float baryU = 0.0f, baryV = 0.0f;     ///< weights of the triangle's second and third vertex
    float hitDistance = 0.0f;
    int lightMis = -1;  ///< what samplers were told of usesLightMis at the hit; -1: nothing yet
    bool diffuseIsBlack = false;  ///< the sampler lit last takes no diffuse light

    // The ray.
    u32 skipObject = kNone, skipTriangle = kNone;  ///< the triangle that the ray leaves, if any
    float bsdfDensity = -1.0f;  ///< density of the direction per solid angle, to be weighted
                                ///< against that of lights; below 0 if the ray sees lights in full
    bool gathers = false;       ///< brings diffuse light to the surface that it left
    float receiveCaustics = 1.0f;  ///< if it gathers: factor of light over a mirror or a lens
    float resultScale = 1.0f;      ///< factor of traceResult
    HiddenObjects hidden;          ///< what the ray doesn't meet
    u32 pathSeed = 0;              ///< of the path's random numbers: the pixel and the way so far
    u32 sampleIndex = 0;           ///< number of the path in its pixel
    int numVolumes = 0;            ///< surfaces that the ray has entered and not left
    PelkVolume* volumes[kMaxVolumes];  // NOLINT: their media; null where a surface has none
    RenderContext* nextFree = nullptr;

    RenderThread& thread() const;
    /// Two numbers in [0, 1) for a decision at the hit; `branch` counts the decisions of one use.
    /// Behind the first diffuse bounce a pattern no longer makes the picture less noisy, and the
    /// numbers are simply independent.
    Random2 random(RandomUse use, u32 branch = 0) const {
        const u32 seed = pathSeed + branch * 0x9e3779b1u;
        return giDepth == 0 ? random2(seed, sampleIndex, use)
                            : independent2(seed, sampleIndex, use);
    }
    /// Whether the ray came to the hit from within the object, whichever way the hit is turned.
    bool isInside() const;
    /// How many of `volumes` are written.
    int storedVolumes() const { return std::min(numVolumes, int{kMaxVolumes}); }
    /// Takes note that the ray, a refracted one, goes through the surface hit by `from`: it enters
    /// the surface's medium from the front and leaves the last one from the back.
    void crossSurface(const RenderContext& from);

    void releaseContext() override;
    PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                   const Vector& direction) override;
    void computeDirectLighting(Color& out, BSDFSampler* sampler) override;
    PelkVolume* currentVolume(PelkVolume* skip) override;
};

/// The context as this host's own. All contexts that its plug-ins meet are.
inline RenderContext& hostContext(PelkContext& context) {
    return static_cast<RenderContext&>(context);
}
inline const RenderContext& hostContext(const PelkContext& context) {
    return static_cast<const RenderContext&>(context);
}

}  // namespace Tarnkit
