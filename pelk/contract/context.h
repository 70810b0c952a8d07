#pragma once

#include <limits>

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/limits.h"
#include "pelk/base/types.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_call.h"

namespace Tarnkit {

class BSDFSampler;
class Fragment;
struct FragmentList;
class PelkRenderer;
class PelkSurfaceProperties;
class PelkVolume;
class PluginBase;
class TextureInterface;

/// Bits of PelkContext::rayType: what the path has been through, and how the ray is to be treated.
/// A host hands kRayCamera, kRayReflect, kRayRefract and kRayGi on to the rays that spring from a
/// hit: a reflection seen by the camera has kRayCamera | kRayReflect, a diffuse bounce of that one
/// also kRayGi.
/// Materials that are hidden from some rays (visibility, mattes) decide by these bits and by
/// traceDepth.
enum RayType : u32 {
    kRayCamera = 0x1,   ///< descends from the camera; with traceDepth 0 it is the camera ray itself
    kRayReflect = 0x2,  ///< a specular or glossy reflection lies on the way
    kRayRefract = 0x4,  ///< a refraction lies on the way; the ray starts at refractionOrigin
    /// A shadow ray of next-event estimation. Hosts set it alone. Only resultTransparency counts:
    /// a material computes no colour, and lights and traces nothing.
    kRayShadow = 0x8,
    kRayGi = 0x10,  ///< a diffuse bounce lies on the way: the ray gathers indirect light
    /// A ray that fills a cache of indirect light. Mattes behave as their base for it.
    kRayGiLike = 0x20,
    /// Stands while a light is evaluated that gives no highlights: eval leaves its specular part
    /// out, whatever its flags ask for.
    kRayNoSpecular = 0x200,
    kRayNoMatte = 0x40000,  ///< mattes behave as their base: for caches that must see real surfaces
    /// Bump maps count at hits behind a diffuse bounce too, where they cost more than they show.
    kRayGiBump = 0x4000000,
    /// Stands while a bump material reads a texture as the tangent frame of a normal map.
    kRayTangentFrame = 0x80000000,
};

/// What newSpawnedContext is asked for a mirror ray: kRayReflect, and the bit 0x8000, which says
/// that the lobe has no width, so that no light can be sampled towards it.
constexpr u32 kSpawnMirror = 0x8002;

/// Bits of PelkContext::shadeFlags, which tell a material how to shade this one hit.
enum ShadeFlags : u32 {
    /// The hit's alpha counts in the picture; the host sets it at each hit. Without it
    /// `alpha_contribution` is not applied.
    kShadeAlphaCounts = 0x1,
    /// The light loop and evalMatte trace no shadow rays: light reaches the surface as if nothing
    /// stood in its way. Set by a material around its base, for objects that receive no shadows.
    kShadeNoShadows = 0x40000,
    /// evalEnvironment reads the picture's backplate at screenX, screenY, as it does for camera
    /// rays. Set by a matte that is seen in a reflection and shows what lies behind it.
    kShadeBackgroundLookup = 0x100000
};

/// Bits of PelkContext::shadedFlags, by which a material tells the host what it has done.
enum ShadedFlags : u32 {
    /// The hit was shaded as a matte: it looks transparent, but isn't empty, so a host that looks
    /// for the first visible surface doesn't pass it over. A matte keeps only the traced
    /// reflections of its base. So a glossy sampler under it turns next-event estimation off and
    /// finds lights by BSDF sampling alone.
    kShadedMatte = 0x8
};

/// What a host keeps for one render thread; it derives its own record from this one. The host owns
/// it, and it outlives all contexts of the thread.
struct ThreadData {
    /// From 0, below SequenceData::numThreads: selects the thread's entry in per-thread pools. Two
    /// threads at work never share a number, which is why a hit needs no lock.
    int threadIndex = 0;
    /// Of the plug-in that the thread is in; written at each call, read when one has failed.
    PluginCall call;
    /// The sampler that a plug-in has given last, and the interface that gave it: says whose
    /// sampler fails. Compared only, as the sampler may be back in its pool.
    const BSDFSampler* givenSampler = nullptr;
    PluginInterface* samplerGiver = nullptr;

    /// Who gave a sampler, if it was the last one, else who is called at the moment.
    PluginInterface* giverOf(const BSDFSampler* sampler) const {
        return sampler && sampler == givenSampler ? samplerGiver : call.callee;
    }
};

/// The shading context: one ray and its hit, what materials answer for the hit, and the way to the
/// rest of the renderer (lights, further rays).
///
/// *Who makes it.* The host. It derives its own class from this one, fills the ray when the ray is
/// set up and the hit when it is found, and owns it. A context belongs to one render thread from
/// the start of a call to its end, so nothing in it needs a lock.
///
/// *What a host calls.* For every hit, whatever the ray (camera, reflection, refraction, indirect
/// or shadow ray), it calls MaterialInterface::shade of the object's material and takes the four
/// results. That is all it needs. BSDFInterface::getBSDF is how a material takes part in another
/// one, or a bare BSDF plug-in in a material: the outer one gets the sampler, drives it and
/// releases it. A host may call getBSDF too if it runs an integrator of its own, and then drives
/// the sampler as BRDFSampler describes.
///
/// *What must be filled before `shade`.* Of the ray: threadData, renderer, rayDir, rayDir2,
/// rayOrigin, rayMinT, rayMaxT, time, rayType, traceDepth, giDepth, rayContribution, rayWeight and
/// rayWeight2. The three weights are 1 on a camera ray: at 0, as in a blank context, materials take
/// every reflection for too dark to trace. Of the hit: hitPoint, refractionOrigin, the three
/// normals, backSide, flippedSide (0), hitID and shadeFlags. surfaceVolume, surfaceProperties and
/// shadedFlags are set back to null and 0 at each hit, or the last surface shows through. All
/// others may stay blank; each field tells what is lost then.
///
/// *What a material may write.* The results, surfaceVolume, surfaceProperties and shadedFlags. Any
/// other field only around a call into a sub-material, and it puts the old value back on every way
/// out, exceptions included: ScopedValue and ScopedFlip do.
///
/// *What the results mean.* Colours are premultiplied: resultColor holds what the surface itself
/// shows, already scaled by its opacity, and nothing of what lies behind. The host goes on with the
/// same ray behind a surface that isn't opaque, and composes front to back, per channel:
///
///     color += through * context.resultColor;
///     alpha += alphaThrough * context.resultAlpha;
///     through *= context.resultTransparency;
///     alphaThrough *= context.resultAlphaTransparency;
///
/// *A mirror ray* of a material's own, with the helpers of shading.h (`tint` is the reflection
/// colour, per channel 0 to 1):
///
///     const SequenceData& settings = context.renderer->sequenceData;
///     const bool inGi = context.rayType & kRayGi;
///     if (context.traceDepth >= settings.maxRayDepth || !settings.reflectionsEnabled ||
///         (inGi && !settings.reflectiveGi))
///         return;
///     const Vector r = mirrorDirection(context);
///     const ScopedRay ray(context.newSpawnedContext(0, tint, kSpawnMirror, r));
///     if (!ray)
///         return;                      // the host spawns none
///     setMirrorRay(context, *ray, r);  // direction, origin, interval, ray differentials
///     context.renderer->traceRay(*ray);
///     context.resultColor += tint * ray->traceResult;  // the weight is not in traceResult
///
/// A context made by itself is blank: everything is 0 and null but environmentPriority, which is
/// below every other, and the operations that need a scene answer with nothing. One may stand on
/// the stack where an operation asks for a context and no ray exists, as getRenderID does when a
/// frame begins.
class PELK_API PelkContext {
public:
    // The ray. Written by the host, or by who spawned the context, before traceRay.

    ThreadData* threadData = nullptr;  ///< the record of the calling thread; never null at a hit
    PelkRenderer* renderer = nullptr;  ///< the one that frameBegin got; never null at a hit
    /// The context of the hit from which this ray was spawned, which stays valid as long as this
    /// one; null for a camera ray. A shadow ray has one too: the hit that is lit.
    PelkContext* parentContext = nullptr;
    /// Fragments of further surfaces, for hosts that collect them at a hit; may be null. A matte
    /// puts a list of its own here around its base, so that nothing of the base reaches the host.
    FragmentList* fragmentList = nullptr;
    u32 shadeFlags = 0;  ///< bits of ShadeFlags; the host writes them anew for each hit
    Vector rayDir;       ///< unit, from the origin towards the hit, in world space like all vectors
    Point rayOrigin;     ///< world space; in double, so that far-off scenes keep their detail
    Vector rayDir2;      ///< second copy of the direction; who sets up a spawned ray writes both
    /// The stretch of the ray that counts, in world units; 0 and kRayFar for most. A spawned ray
    /// starts at 0, so the host itself must not find the triangle that the ray leaves.
    double rayMinT = 0.0, rayMaxT = 0.0;
    double time = 0.0;  ///< scene time of the sample, in the unit of FrameData::frameTime
    u32 rayType = 0;    ///< bits of RayType; kRayCamera for a camera ray
    /// Number of surfaces at which the path was turned or split: 0 for a camera ray, one more for
    /// each ray spawned from a hit. What goes straight on through a transparent surface keeps it.
    int traceDepth = 0;
    int giDepth = 0;  ///< number of diffuse bounces on the way; also counted in traceDepth
    /// Where the host would start a spawned ray, by its own rules against self-intersection. Filled
    /// by newSpawnedContext; materials copy it to rayOrigin.
    Point spawnOrigin;
    u64 parentHitLink = 0;  ///< the parent's hitLink; the host or who sets up the ray copies it
    /// The sample's place on the picture, in pixels from its upper left corner. Rays spawned from a
    /// hit keep the camera ray's. Read by backplates and other textures that lie on the picture.
    double screenX = 0.0, screenY = 0.0;
    /// Ray differentials (Igehy, "Tracing Ray Differentials", SIGGRAPH 1999): what one pixel to the
    /// right (X) and one down (Y) changes in the origin, in world units, and in the unit direction.
    /// Who spawns a ray mirrors or refracts those of the direction. They choose filter widths only:
    /// left at 0, textures are sharper than they should be, and nothing else goes wrong.
    Vector originDerivX, originDerivY;
    Vector rayDerivX, rayDerivY;
    /// The distance, in world units, beyond which a host may leave surfaces out of the ray's sight;
    /// kRayFar for no limit. `pelk` doesn't clip, but hands the value on to spawned rays, as every
    /// host does.
    float rayClipDistance = 0.0f;
    /// A scalar throughput by which materials cut off rays too weak to matter: 1 on a camera ray,
    /// handed on by newSpawnedContext, scaled by materials that use it.
    float rayContribution = 0.0f;
    /// Throughput: the factor, per channel, by which what this ray brings will count in the sample.
    /// 1 on a camera ray, times the `weight` of each spawning. A hint for cut-offs, never applied
    /// to a result by the host: who scales a colour does so itself. A material that filters its
    /// base, or reads a texture with a weight, scales it for the length of the call and restores
    /// it, so that the base doesn't trace what can't be seen.
    Color rayWeight;
    /// A second throughput, with the same value where a ray is spawned. MtlSingleBRDF scales both
    /// by its filter; wrappers, layers and texture blends scale rayWeight alone, so this is the
    /// throughput without the shares of layers. It is copied along with rayWeight; nobody here
    /// decides by it.
    Color rayWeight2;
    /// The `weight` that newSpawnedContext was given. Who traces a sampler's own ray multiplies
    /// what it saw by it: that is how the ray is tinted. Written by newSpawnedContext and never
    /// changed.
    Color spawnWeight;
    /// The `rayFlags` that newSpawnedContext was given, without the bits that rayType takes over
    /// from the parent: the way to tell whether this very ray is a reflection or a refraction.
    u32 spawnFlags = 0;
    /// Not 0: irradiance is asked for over the hemisphere that the viewer does not see. Set around
    /// one call by TwoSidedBSDF, for light that shows through; 0 at each new hit.
    int gathersBeyond = 0;
    /// Texture that stands for the environment, read along rayDir by rays that meet nothing; null
    /// for the scene's own. Spawned rays take both fields over. Changed by setEnvironment alone.
    TextureInterface* environment = nullptr;
    int environmentPriority = std::numeric_limits<int>::min();

    // The hit. Written by the host before `shade`, but where a field says otherwise.

    /// The object hit, as the plug-in that is asked for ObjectMappingInterface; may be null.
    PluginBase* hitMapping = nullptr;
    /// The object hit, as the plug-in that is asked for material ids, shader sets and the tangent
    /// frame (scene_interfaces.h); null, or an object without one of them, gets the fixed answer of
    /// each material: id 0, the first sub-material, no tangent frame.
    PluginBase* hitObject = nullptr;
    /// The medium behind the surface, null if it has none. Null when `shade` begins; written by the
    /// material from BSDFSampler::getVolume, before it traces, as refracted rays enter it then.
    /// Null again after `shade` where the surface turned out opaque.
    PelkVolume* surfaceVolume = nullptr;
    /// Wishes of the surface to the renderer (matte, scaling of indirect light, exclude tables).
    /// Null when `shade` begins and for most surfaces; written by MtlWrapper, whose record lives as
    /// long as the frame. The host reads it while the hit is lit and when rays are spawned there.
    PelkSurfaceProperties* surfaceProperties = nullptr;
    /// The host's key of the piece of geometry hit (`pelk`: object and triangle). Materials only
    /// copy it to parentHitLink, by which a host may know the surface that a ray has left.
    u64 hitLink = 0;
    Point hitPoint;  ///< world space
    /// Unit shading normal: interpolated, and moved by bump maps around calls. Like the other two
    /// it is the surface's own and looks at the viewer on the front only: it is not turned to the
    /// ray.
    Vector normal;
    Vector geomNormal;  ///< unit normal of the geometry; decides which side the ray came from
    /// Not 0 if the ray hit the back: rayDir . geomNormal > 0.
    int backSide = 0;
    Vector faceNormal;  ///< unit normal of the polygon; on triangles the same as geomNormal
    /// Where a refracted ray starts, beyond the surface. hitPoint, for a host that knows by other
    /// means not to hit the same triangle again.
    Point refractionOrigin;
    /// Not 0 while flipSide has turned the hit over, by which a material tells the back of a
    /// surface from a front that was turned to look like one. 0 when `shade` begins.
    int flippedSide = 0;
    /// Number of the hit, given by the host, never 0. Materials compare it to know whether what
    /// they found out for a hit still holds, so no two hits of a thread that can be mixed up share
    /// one: `pelk` counts the hits of a thread and starts again at 1 after 2^31 - 1.
    int hitID = 0;
    u32 shadedFlags = 0;  ///< bits of ShadedFlags; 0 when `shade` begins, written by the material

    // What a spawned context brings back. Written by PelkRenderer::traceRay.

    /// Radiance along the ray, everything behind transparent surfaces and the environment included.
    /// Neither spawnWeight nor rayWeight is in it, but the caustics factors of
    /// PelkSurfaceProperties are, where they apply. White surroundings give 1.
    Color traceResult;
    Color traceAlpha;  ///< coverage along the ray, 0 to 1; what the environment shows has 0

    // The results, written by `shade`: all four on every way out. Per channel, premultiplied.

    /// What the surface shows, scaled by its opacity; 0 or more, in the scale in which a white
    /// Lambert surface facing a light of 1 gives 1. Nothing of what lies behind.
    Color resultColor;
    /// Share of what lies behind that shows, 0 to 1; on a shadow ray the share of light that
    /// passes. While lights are evaluated it holds the sampler's own transparency.
    Color resultTransparency;
    Color resultAlpha;  ///< coverage in the picture's alpha, 0 to 1
    /// Share of the alpha behind that counts. Apart from resultTransparency, as a matte can show
    /// what lies behind it and still be opaque to the alpha.
    Color resultAlphaTransparency;
    /// Render channels of the hit; null where none are wanted, as on all spawned rays of `pelk`.
    /// The host's, clear when `shade` begins. The host enters the results in it after `shade`, and
    /// then adds the fragment's background to the colour: a matte leaves what it shows of the
    /// background there (kAliasBackground), and in resultColor only where there is no fragment.
    Fragment* resultFragment = nullptr;

    virtual ~PelkContext();

    // Operations, called by materials and samplers on the context's own thread. The bodies here are
    // those of a blank context; a host overrides what needs its scene.

    /// Gives a spawned context back to the host, after which it must not be touched. Called once by
    /// who got it from newSpawnedContext. Doesn't throw: ScopedRay calls it in a destructor.
    virtual void releaseContext();
    /// A context for a secondary ray from this hit, owned by the host, valid until releaseContext;
    /// null if none can be had (a blank context, a host that refuses): the ray counts as black.
    ///
    /// `index`: tells rays with equal `rayFlags` at one hit apart; the random numbers of the path
    /// behind may hang on it. `weight`: what the caller will multiply the ray's colour with, per
    /// channel; it becomes spawnWeight and scales rayWeight and rayWeight2. `rayFlags`: bits of
    /// RayType that say what the ray is (kSpawnMirror, kRayReflect, kRayRefract); they become
    /// spawnFlags and are added to what rayType takes over. `direction`: unit. A caller that knows
    /// it only later gives any, and writes the ray then.
    ///
    /// The host fills all ray fields, with depths counted up, and resultFragment null. The caller
    /// sets what it knows better: rayDir with rayDir2, rayOrigin (refractionOrigin for a refracted
    /// ray), the ray differentials, rayContribution. It keeps depth limits itself: see
    /// SequenceData. May throw an ExceptionMsg.
    virtual PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                           const Vector& direction);
    /// Direct light at the hit by next-event estimation: runs all lights of the scene through the
    /// sampler's BRDFs, shadow rays included, and overwrites `out` with the sum. Lights before the
    /// viewer's side go to that side's BRDF; lights behind go to that of the other side, if getBRDF
    /// answers with another object there. The results stay as they are. May throw.
    virtual void computeDirectLighting(Color& out, BSDFSampler* sampler);
    /// The innermost medium in which the ray travels up to the hit, passing over `skip` (null
    /// passes over none); null outside all media. Asked for indices of refraction: with the medium
    /// of the surface as `skip`, a ray that leaves it learns what it goes back into.
    virtual PelkVolume* currentVolume(PelkVolume* skip);
    /// Turns the hit to its other side: negates the three normals, toggles backSide and
    /// flippedSide. Twice is as before; doesn't throw. Materials use it so that one-sided samplers
    /// answer for a back.
    virtual void flipSide();
    /// Overrides the environment of what is traced from here on. Holds if there is a texture and
    /// its priority is not below the present one, else nothing changes; so the highest priority
    /// along a path wins, and of equal ones the last. The caller saves and restores both fields.
    /// `flag`: 1; not read.
    virtual void setEnvironment(TextureInterface* texture, int priority, int flag);
    /// Shades the hit through a sampler: computeDirectLighting, then traceBSDFForward with `flag`
    /// as its doDiffuse (kWithoutIndirectDiffuse, kAllIndirect, kWithoutOwnRays), and writes the
    /// sum into the four results; fully transparent for a null sampler. The lights come first, as
    /// some samplers gather in eval what they use while tracing. Not for shadow rays: see
    /// shadeBSDF. May throw.
    virtual void shadeWithBSDF(BSDFSampler* bsdf, int flag);
};

/// Writes all four results. See PelkContext for what each means.
inline void setResults(PelkContext& context, Color color, Color transparency, Color alpha,
                       Color alphaTransparency) {
    context.resultColor = color;
    context.resultTransparency = transparency;
    context.resultAlpha = alpha;
    context.resultAlphaTransparency = alphaTransparency;
}

// Three results recur in materials. None of them touches the render channels.

/// A black surface that nothing shows through: the answer of a material without its base.
inline void setOpaqueBlack(PelkContext& context) {
    setResults(context, Color(0), Color(0), Color(1), Color(0));
}

/// No surface at all: the ray goes on as if nothing had been hit. The answer without a sampler.
inline void setFullyTransparent(PelkContext& context) {
    setResults(context, Color(0), Color(1), Color(0), Color(1));
}

/// All four 0: black and opaque to what lies behind, but a hole in the alpha. What one matte shows
/// in another.
inline void setNothing(PelkContext& context) {
    setResults(context, Color(0), Color(0), Color(0), Color(0));
}

/// A field that has another value until the scope ends, and is put back whatever way is taken out
/// of it. A context goes on to other materials after a call, and running out of memory may end a
/// call early, so a plain assignment at its end is not enough.
///
///     const ScopedValue weight(context.rayWeight, context.rayWeight * filter);
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

/// The hit turned to its other side (flipSide) until the scope ends, if `isFlipped` asks for it.
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

/// Shades the hit through a sampler as a whole surface: what a material calls in `shade` with the
/// sampler of its own getBSDF. Fills the four results: on a shadow ray from getBSDFTransparency
/// alone, on any other by shadeWithBSDF with indirect diffuse light; fully transparent for a null
/// sampler. surfaceVolume, if it was null, is the sampler's medium while rays are traced and stays
/// so unless the surface turns out opaque. The caller releases the sampler. May throw;
/// surfaceVolume is as it was then.
PELK_API void shadeBSDF(PelkContext& context, BSDFSampler* bsdf);

/// Ray differentials of a mirror reflection: writes the rayDerivX and rayDerivY of `context`,
/// mirrored, into those of `newContext`, whose ray leaves along the unit vector `direction`. The
/// axis is the half vector `direction - rayDir` made unit; a zero or underflowed half vector (see
/// isCollapsed, which gets `limit`; kCollapsed) is used as it is, so that nothing is divided by 0.
/// Derivatives of the normal are left out: a curved mirror filters as a flat one. `flag`: 0; not
/// read. Igehy, "Tracing Ray Differentials", SIGGRAPH 1999, section 3.1.2.
PELK_API void setReflectDerivs(PelkContext& context, PelkContext& newContext,
                               const Vector& direction, int flag, float limit);

}  // namespace Tarnkit
