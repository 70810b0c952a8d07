#pragma once

#include "frame/context.h"
#include "frame/types.h"
#include "render/mesh.h"

namespace Tarnkit {

class RenderThread;
struct SceneObject;

/// This host's context: a ray and its hit on a triangle. Contexts come from a pool of their thread
/// and are not made anew: who hands one out writes every field that is read before it is written.
class RenderContext final : public PelkContext {
public:
    // The hit, for the plug-ins of this host.
    const SceneObject* object = nullptr;  ///< null where the ray hit no geometry
    u32 triangle = 0;                     ///< index in the object's mesh
    float baryU = 0.0f, baryV = 0.0f;     ///< weights of the triangle's second and third vertex

    // The ray.
    u32 skipObject = ~0u, skipTriangle = ~0u;  ///< the triangle that the ray leaves, if any
    float bsdfDensity = -1.0f;  ///< density of the direction per solid angle, to be weighted against
                                ///< that of lights; below 0 if the ray sees lights in full
    u32 pathSeed = 0;           ///< random numbers of the path that the ray belongs to
    bool sampledByGi = false;   ///< an indirect ray of the host's own
    RenderContext* nextFree = nullptr;

    RenderThread& thread() const;

    void releaseContext() override;
    PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                   const Vector& direction) override;
    void computeDirectLighting(Color& out, BSDFSampler* sampler) override;
    PelkVolume* currentVolume(PelkVolume* skip) override;
};

/// Texture coordinates at `context.hitPoint`, which may have been moved along the surface since
/// the hit; 0, 0 where the object has none. `context` is one of this host.
UV surfaceUV(const PelkContext& context);

/// The object hit, null if none; for plug-ins of this host, whose contexts are RenderContexts.
inline const RenderContext& hostContext(const PelkContext& context) {
    return static_cast<const RenderContext&>(context);
}

}  // namespace Tarnkit
