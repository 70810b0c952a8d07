#pragma once

// The host as plug-ins see it: the renderer with its settings, lights, camera and messages. A host
// implements these classes and owns the objects; they live from before renderBegin until after
// renderEnd.

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"
#include "pelk/contract/scene_interfaces.h"

namespace Tarnkit {

class BRDFSampler;
class PelkContext;

/// Where messages go. Formats are those of printf; texts end in a line feed. Any render thread may
/// call at any time, several at once, so an implementation locks or writes a message in one piece.
/// It doesn't throw, and copies what it keeps, as the arguments go with the call.
///
/// Plug-ins warn in frameBegin where they can, and at a hit at most once per instance and frame: a
/// bad scene is wrong at every hit, and millions of messages help nobody.
class PELK_API MessageLog {
public:
    virtual ~MessageLog();
    /// What only the developers of a plug-in want to know.
    virtual void debug(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    /// The picture may not be what was meant; the render goes on. The materials use this one only.
    virtual void warning(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    /// Something that was asked for can't be had.
    virtual void error(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    /// Progress and statistics.
    virtual void info(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    /// Nothing more will come for now: what is buffered can be written out.
    virtual void finish() = 0;
};

/// A position on the picture, in pixels from its upper left corner; the centre of the first pixel
/// is 0.5, 0.5.
struct ScreenPoint {
    double x = 0.0, y = 0.0;
};

/// The camera, for mattes that show the part of the background that lies behind them.
class PELK_API PelkCamera {
public:
    virtual ~PelkCamera();
    /// Projects the context's hitPoint to the picture; the caller has taken it to the camera's
    /// space by WorldTransform, if the render uses one. Returns 0, and leaves `point` as it is, if
    /// the camera can't see it, as behind it; a place beside the picture is an answer too. If
    /// `distance` is not null it becomes the depth along the camera's axis, in world units. Called
    /// at hits from all render threads at once; doesn't throw.
    virtual int mapToScreen(PelkContext& context, ScreenPoint& point, float* distance) = 0;
};

/// The lights of the scene, for a material that lights a sampler of its own: a matte, which wants
/// the light with and without shadows and no colour.
class PELK_API LightManager {
public:
    virtual ~LightManager();
    /// Runs next-event estimation at the hit through one BRDF: for each light that lies on the
    /// viewer's side eval, multiplyLight and lightFinished, as BRDFSampler describes, with shadow
    /// rays unless shadeFlags has kShadeNoShadows. Overwrites `out` with the sum of what eval
    /// answered; the four results stay as they are. Called at hits from all render threads at once.
    /// May throw an ExceptionMsg, as shadow rays shade surfaces.
    virtual void computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) = 0;
};

/// The GI engine: indirect diffuse light. All operations are called at hits from all render threads
/// at once, and may throw an ExceptionMsg, as the rays that they trace shade surfaces.
class PELK_API DefaultGlobalLightManager {
public:
    virtual ~DefaultGlobalLightManager();
    /// Overwrites `out` with the indirect irradiance at the hit over pi: the cosine-weighted mean
    /// of radiance over the hemisphere about the context's normal on the viewer's side, so that
    /// white surroundings give 1. Times the diffuse albedo it is what the viewer sees. Lights that
    /// indirect rays can hit are in it by their share of MIS (see usesLightMis), others aren't.
    ///
    /// With PelkContext::gathersBeyond the hemisphere is the one beyond the surface. Black on a
    /// back that was not turned over (backSide set, flippedSide not): a one-sided sampler has
    /// nothing to answer there. surfaceProperties scale it by `receive_gi`.
    virtual void irradiance(Color& out, PelkContext& context) = 0;
    /// Not 0 if indirect rays from the hit may find lights that the light loop samples too. Diffuse
    /// samplers must then weight eval by the power heuristic, as BRDFSampler shows; the engine does
    /// its half. 0 leaves lights to the light loop: where the surface is a matte, scales what it
    /// receives, or is lit without shadows, so that the two ways would not find the same light. One
    /// answer holds for the whole hit.
    virtual int usesLightMis(PelkContext& context) = 0;
    /// For mattes: light from what the light loop doesn't cover, the background colour or a
    /// material's environment override, without lights. On the viewer's side, in the scale of
    /// `irradiance`. `unshadowed`: as if nothing stood in its way; `shadowed`: with what does.
    /// Their quotient is the ambient shadow on the matte. Overwrites both.
    virtual void evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) = 0;
};

/// The way from the scene's space to the one in which the camera stands, for hosts that render far
/// from the origin and move the scene to it.
class PELK_API WorldTransform {
public:
    virtual ~WorldTransform();
    /// Overwrites `out` with `point` in the camera's space at the scene time `time`. Called at hits
    /// from all render threads at once; doesn't throw.
    virtual void transformPoint(Point& out, const Point& point, double time) = 0;
};

/// Settings of a render, written by the host before renderBegin and read-only until renderEnd. It
/// is also an object that can be asked for interfaces: ChannelHostInterface, if the host adds one.
///
/// A host must fill lightManager, giEngine, numThreads and maxRayDepth; the others may stay as they
/// are made.
class PELK_API SequenceData : public PluginBase {
public:
    MessageLog* log = nullptr;  ///< may be null: nobody listens, and plug-ins test for it
    /// May be null: mattes then show the background along the ray instead of by the picture.
    PelkCamera* camera = nullptr;
    LightManager* lightManager = nullptr;  ///< never null at a hit
    /// Never null at a hit; with indirect light switched off an engine that answers black and 0.
    DefaultGlobalLightManager* giEngine = nullptr;
    WorldTransform* worldTransform = nullptr;  ///< read only if useWorldTransform is not 0
    int useWorldTransform = 0;                 ///< not 0: the camera's space is not the scene's
    /// Number of render threads, at least 1: the size of every per-thread pool. Plug-ins read it in
    /// renderBegin or frameBegin, so it holds from then to the end of the render.
    int numThreads = 0;
    /// 0: rays with kRayGi spawn no mirror reflection, so there are no caustics from mirrors. Kept
    /// by materials and samplers, not by newSpawnedContext.
    int reflectiveGi = 0;
    int reflectionsEnabled = 1;  ///< 0: materials trace no reflection, as in a preview
    /// Not 0: depth limits of single materials are ignored and maxRayDepth alone holds.
    int depthOverride = 0;
    /// The traceDepth at which a material traces no further ray. A host shades no surface for rays
    /// that are this deep: they end black and opaque, though they still see the environment. At 0,
    /// as it is made, nothing is shaded at all.
    int maxRayDepth = 0;
};

/// Settings of a frame, written by the host before frameBegin and read-only until frameEnd. A host
/// must fill frameTime; the camera and the picture only matter to mattes and textures that are
/// projected by the picture.
struct FrameData {
    double frameTime = 0.0;  ///< scene time, at which frameBegin reads the parameters of plug-ins
    Point cameraPosition;    ///< in the space to which WorldTransform takes a hit
    /// Camera axes in world space, as columns that turn a camera-space vector into world space:
    /// right, up, backwards, each of unit length.
    Vector cameraMatrix[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    int imageWidth = 0, imageHeight = 0;  ///< of the whole picture, in pixels
};

/// The renderer. Plug-ins get it in renderBegin and frameBegin, and at a hit through the context.
class PELK_API PelkRenderer {
public:
    SequenceData sequenceData;
    FrameData frameData;

    virtual ~PelkRenderer();
    /// Writes what the environment shows along rayDir into resultColor, and nothing else: radiance
    /// of the surroundings and of lights at infinity, or the texture of PelkContext::environment.
    /// Camera rays, and contexts with kShadeBackgroundLookup, see the picture's backplate instead,
    /// if the scene has one. Called at hits by materials that show what lies behind, from all
    /// render threads at once; may throw an ExceptionMsg.
    virtual void evalEnvironment(PelkContext& context) = 0;
    /// Traces a spawned context through transparent surfaces to its end, shading what it hits, and
    /// writes traceResult and traceAlpha. The hit fields and results of the context are those of
    /// its last surface then. Called at hits by who spawned it, from all render threads at once;
    /// shading is recursive, so it runs on the caller's thread and stack. May throw an
    /// ExceptionMsg.
    virtual void traceRay(PelkContext& context) = 0;
    /// The texts that are compared at hits by number. The renderer's own; not null. Called in
    /// frameBegin, on the thread that begins frames: making a number takes memory and a search, so
    /// plug-ins keep the numbers for the hits of the frame.
    virtual StringTable* getStringTable() = 0;
};

}  // namespace Tarnkit
