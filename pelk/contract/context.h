#pragma once

#include <limits>

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

class BSDFSampler;
class Fragment;
struct FragmentList;
class PelkRenderer;
class PelkSurfaceProperties;
class PelkVolume;
class PluginBase;
class TextureInterface;

/// Bits of PelkContext::rayType.
enum RayType : u32 {
    kRayCamera = 0x1,  ///< descends from the camera; with traceDepth 0 it is the camera ray itself
    kRayReflect = 0x2,
    kRayRefract = 0x4,
    kRayShadow = 0x8,               ///< only transparency counts
    kRayGi = 0x10,                  ///< indirect diffuse light
    kRayGiLike = 0x20,              ///< of caches of indirect light
    kRayNoSpecular = 0x200,         ///< direct light leaves the specular part out
    kRayNoMatte = 0x40000,          ///< mattes behave as their base
    kRayGiBump = 0x4000000,         ///< bump also in indirect light
    kRayTangentFrame = 0x80000000,  ///< the tangent frame of a normal map is being read
};

/// What newSpawnedContext is asked for a mirror ray.
constexpr u32 kSpawnMirror = 0x8002;

/// Bits of PelkContext::shadeFlags.
enum ShadeFlags : u32 {
    kShadeAlphaCounts = 0x1,
    kShadeNoShadows = 0x40000,         ///< light reaches the surface as if nothing stood in its way
    kShadeBackgroundLookup = 0x100000  ///< the environment is read as the picture's background
};

/// Bits of PelkContext::shadedFlags.
enum ShadedFlags : u32 { kShadedMatte = 0x8 };

/// The end of a ray that has none: 1e18 in single precision.
constexpr double kRayFar = static_cast<double>(1e18f);

/// The render thread that a context belongs to. A host derives its own record from it.
struct ThreadData {
    int threadIndex = 0;  ///< from 0, below the numThreads of the sequence data
};

/// One ray and its hit. The host fills it; a material writes the results, and may change a ray or
/// hit field around a call into a sub-material if it puts the field back. Belongs to one thread.
/// A context made by itself is blank: everything 0 and null, and the operations that need a scene
/// answer with nothing.
class PELK_API PelkContext {
public:
    // The ray.
    ThreadData* threadData = nullptr;
    PelkRenderer* renderer = nullptr;
    PelkContext* parentContext =
        nullptr;  ///< the context that spawned this one; null for a camera ray
    FragmentList* fragmentList = nullptr;
    u32 shadeFlags = 0;
    Vector rayDir;
    Point rayOrigin;
    Vector rayDir2;  ///< second copy of the direction; who sets up a spawned ray writes both
    double rayMinT = 0.0, rayMaxT = 0.0;
    double time = 0.0;
    u32 rayType = 0;
    int traceDepth = 0;     ///< 0 for a camera ray
    int giDepth = 0;        ///< above 0 after a diffuse bounce
    Point spawnOrigin;      ///< where a spawned ray starts
    u64 parentHitLink = 0;  ///< the parent's hitLink
    double screenX = 0.0, screenY = 0.0;
    Vector originDerivX, originDerivY;
    Vector rayDerivX, rayDerivY;
    float rayClipDistance = 0.0f;
    float rayContribution = 0.0f;
    Color rayWeight;
    Color rayWeight2;
    Color spawnWeight;  ///< weight that the ray was spawned with, written by newSpawnedContext
    u32 spawnFlags =
        0;  ///< what the ray was asked to be, without what it takes over from its parent
    int gathersBeyond =
        0;  ///< not 0: indirect light is asked for from the side that the ray can't see
    TextureInterface* environment = nullptr;  ///< override of the environment, and its priority
    int environmentPriority = std::numeric_limits<int>::min();

    // The hit.
    PluginBase* hitMapping = nullptr;
    PluginBase* hitObject = nullptr;
    PelkVolume* surfaceVolume = nullptr;
    PelkSurfaceProperties* surfaceProperties = nullptr;
    u64 hitLink = 0;
    Point hitPoint;
    Vector normal;      ///< for shading
    Vector geomNormal;  ///< of the geometry
    int backSide = 0;   ///< not 0 if the ray comes from the side that the geometric normal leaves
    Vector faceNormal;
    Point refractionOrigin;
    int flippedSide = 0;
    int hitID =
        0;  ///< key of the hit: no two hits of a thread in a frame have the same, none has 0
    u32 shadedFlags = 0;

    // What a spawned context brings back, and the results of the hit.
    Color traceResult;
    Color traceAlpha;
    Color resultColor;
    Color resultTransparency;
    Color resultAlpha;
    Color resultAlphaTransparency;
    Fragment* resultFragment = nullptr;  ///< null where nothing is to be written of the hit

    virtual ~PelkContext();
    /// Gives a spawned context back.
    virtual void releaseContext();
    /// A context for a secondary ray along `direction`, null if none can be had. `rayFlags` holds
    /// bits of RayType; `weight` is what the ray's colour will be multiplied with.
    virtual PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                           const Vector& direction);
    /// Writes the direct light at the hit.
    virtual void computeDirectLighting(Color& out, BSDFSampler* sampler);
    /// The medium in which the ray travels, passing over `skip`; null if there is none.
    virtual PelkVolume* currentVolume(PelkVolume* skip);
    /// Turns the hit to its other side: negates the normals, toggles backSide and flippedSide.
    virtual void flipSide();
    /// Overrides the environment of what is traced from here on. Holds if there is a texture and
    /// its priority is not below the present one.
    virtual void setEnvironment(TextureInterface* texture, int priority, int flag);
    /// Shades the hit through a sampler: direct light, then what the sampler traces.
    virtual void shadeWithBSDF(BSDFSampler* bsdf, int flag);
};

// The three results that recur in materials.

inline void setResults(PelkContext& context, Color color, Color transparency, Color alpha,
                       Color alphaTransparency) {
    context.resultColor = color;
    context.resultTransparency = transparency;
    context.resultAlpha = alpha;
    context.resultAlphaTransparency = alphaTransparency;
}

inline void setOpaqueBlack(PelkContext& context) {
    setResults(context, Color(0), Color(0), Color(1), Color(0));
}

inline void setFullyTransparent(PelkContext& context) {
    setResults(context, Color(0), Color(1), Color(0), Color(1));
}

inline void setNothing(PelkContext& context) {
    setResults(context, Color(0), Color(0), Color(0), Color(0));
}

/// A value that is put back when the scope ends, whatever way is taken out of it.
template <class T>
class ScopedValue {
public:
    ScopedValue(T& target_, const T& value) : target(target_), old(target_) { target = value; }
    ~ScopedValue() { target = old; }
    ScopedValue(const ScopedValue&) = delete;
    ScopedValue& operator=(const ScopedValue&) = delete;

private:
    T& target;
    T old;
};

/// The context turned to its other side, if asked for, until the scope ends.
class ScopedFlip {
public:
    explicit ScopedFlip(PelkContext& context_, bool isFlipped = true)
        : context(context_), flipped(isFlipped) {
        if (flipped)
            context.flipSide();
    }
    ~ScopedFlip() {
        if (flipped)
            context.flipSide();
    }
    ScopedFlip(const ScopedFlip&) = delete;
    ScopedFlip& operator=(const ScopedFlip&) = delete;

private:
    PelkContext& context;
    bool flipped;
};

/// Shades the hit through a sampler as a whole surface: fills the four results, on a shadow ray
/// from the sampler's transparency alone, and the surface's volume for the length of the call.
PELK_API void shadeBSDF(PelkContext& context, BSDFSampler* bsdf);

/// Mirrors the derivatives of the context's ray into `newContext`, whose ray leaves along
/// `direction`. `limit` bounds the length of the mirroring axis against its components.
PELK_API void setReflectDerivs(PelkContext& context, PelkContext& newContext,
                               const Vector& direction, int flag, float limit);

}  // namespace Tarnkit
