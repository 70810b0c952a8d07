#pragma once

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"
#include "pelk/contract/scene_interfaces.h"

namespace Tarnkit {

class BRDFSampler;
class PelkContext;

/// Where messages go. Formats are those of printf.
class PELK_API MessageLog {
public:
    virtual ~MessageLog();
    virtual void debug(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    virtual void warning(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    virtual void error(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    virtual void info(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
    virtual void finish() = 0;
};

/// A position on the picture, in pixels from its upper left corner.
struct ScreenPoint {
    double x = 0.0, y = 0.0;
};

/// The camera as materials see it.
class PELK_API PelkCamera {
public:
    virtual ~PelkCamera();
    /// Maps the hit to the picture; `distance`, if wanted, becomes the depth before the camera.
    /// Returns 0 if the hit can't be mapped.
    virtual int mapToScreen(PelkContext& context, ScreenPoint& point, float* distance) = 0;
};

/// The lights of the scene as materials see them.
class PELK_API LightManager {
public:
    virtual ~LightManager();
    /// Runs all lights at the hit through `sampler`; `out` becomes what the sampler answered.
    virtual void computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) = 0;
};

/// Indirect light.
class PELK_API DefaultGlobalLightManager {
public:
    virtual ~DefaultGlobalLightManager();
    /// Indirect light at the hit, as the cosine-weighted mean over the hemisphere before it: white
    /// surroundings give 1.
    virtual void irradiance(Color& out, PelkContext& context) = 0;
    /// Not 0 if indirect rays from the hit may find a light that is also sampled directly.
    virtual int usesLightMis(PelkContext& context) = 0;
    /// Indirect light at the hit, without and with what stands in its way.
    virtual void evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) = 0;
};

/// The way from the scene's space to the one in which the camera stands.
class PELK_API WorldTransform {
public:
    virtual ~WorldTransform();
    virtual void transformPoint(Point& out, const Point& point, double time) = 0;
};

/// Settings of a render. Also a plug-in-like object: EXT_CHANNEL_HOST is asked of it.
class PELK_API SequenceData : public PluginBase {
public:
    MessageLog* log = nullptr;
    PelkCamera* camera = nullptr;
    LightManager* lightManager = nullptr;
    DefaultGlobalLightManager* giEngine = nullptr;
    WorldTransform* worldTransform = nullptr;
    int useWorldTransform = 0;
    int numThreads = 0;          ///< number of render threads; the size of every per-thread pool
    int reflectiveGi = 0;        ///< 0: indirect rays spawn no mirror reflection
    int reflectionsEnabled = 1;  ///< 0: materials trace no reflection
    int depthOverride = 0;       ///< not 0: a material's own depth limit is ignored
    int maxRayDepth = 0;         ///< the depth at which no further ray is spawned
};

/// Settings of a frame.
struct FrameData {
    double frameTime = 0.0;
    Point cameraPosition;
    Vector cameraMatrix[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  ///< columns: camera to world
    int imageWidth = 0, imageHeight = 0;
};

/// The renderer as materials see it.
class PELK_API PelkRenderer {
public:
    SequenceData sequenceData;
    FrameData frameData;

    virtual ~PelkRenderer();
    /// Writes what the environment shows along the ray into the context's resultColor.
    virtual void evalEnvironment(PelkContext& context) = 0;
    /// Traces a spawned context: fills its traceResult and traceAlpha.
    virtual void traceRay(PelkContext& context) = 0;
    virtual StringTable* getStringTable() = 0;
};

}  // namespace Tarnkit
