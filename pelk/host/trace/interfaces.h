#pragma once

#include <optional>
#include <string>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"
#include "pelk/contract/renderer.h"
#include "pelk/host/trace/mesh.h"
#include "pelk/host/trace/placement.h"

namespace Tarnkit {

/// A plug-in that puts a triangle mesh into the scene. RenderSetup calls it on one thread, before
/// rendering.
class GeometryInterface : public PluginInterface {
public:
    static constexpr InterfaceID<GeometryInterface> kInterfaceID{0x7E1C0001, "EXT_GEOMETRY"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Bytes that tell the shapes of this scene's geometries apart: any two that answer the same
    /// make the same by buildShape, which is then called on one of them only. Empty for a shape
    /// that is like no other. Called before a render, when parameters are up to date, as is what
    /// follows.
    virtual std::string shapeKey() = 0;
    /// Makes the triangles in object space. Returns false with a text that says what is wrong.
    virtual bool buildShape(Mesh& mesh, std::string& error) = 0;
    /// Where the object stands, from object space to world space. Returns no value, with a text
    /// that says what is wrong, if it can't stand there.
    virtual std::optional<Placement> findPlace(std::string& error) = 0;
    /// The plug-in whose EXT_MATERIAL shades the triangles; may be null.
    virtual PluginBase* getMaterial() = 0;
    /// The number of the object in the scene: the id by which Embree knows it, the value of the
    /// render_id channel and what exclude lists hold. Set before frameBegin, in which materials ask
    /// for it.
    virtual void setRenderID(int id) = 0;
};

/// Bounding sphere of the scene's geometry, world space.
struct SceneBounds {
    Point centre;
    double radius = 1.0;
};

/// One sample of next-event estimation: a direction from the hit to a point of a light.
struct LightSample {
    Vector direction;       ///< unit, towards the light
    double distance = 0.0;  ///< kRayFar for a light at infinity
    Color radiance;         ///< that arrives; of a delta light, irradiance / pi
    float density = 0.0f;   ///< of the direction, per solid angle; 0 for a delta light
};

/// Where a ray hits a light.
struct LightHit {
    double distance = 0.0;
    Color radiance;
    float density = 0.0f;  ///< per solid angle, with which `sample` chooses this direction: for MIS
};

/// A plug-in that lights the scene. Its radiance is found in two ways, which must agree: `sample`
/// for next-event estimation, `intersect` for rays that hit it by chance. Both run on all render
/// threads at once; the answers don't change while a frame is rendered.
class LightInterface : public PluginInterface {
public:
    static constexpr InterfaceID<LightInterface> kInterfaceID{0x7E1C0002, "EXT_LIGHT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// Called once before a render, when parameters and geometry are up to date. Returns false
    /// with a text that says what is wrong.
    virtual bool prepare(const SceneBounds& bounds, std::string& error) = 0;
    /// Samples a direction from context.hitPoint by two random numbers in [0, 1). Returns false if
    /// no light reaches the point.
    virtual bool sample(PelkContext& context, float random1, float random2, LightSample& out) = 0;
    /// Intersects the light with a ray, at a distance in (minT, maxT). A light at infinity is hit
    /// at kRayFar if maxT is not less. Delta lights are never hit. `direction` is of unit length.
    virtual bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                           LightHit& out) = 0;
    /// True for a light at infinity: hit by rays that hit nothing else.
    virtual bool isInfinite() const { return false; }
    /// True for an environment light, which a material's own environment replaces for its rays.
    virtual bool isDome() const { return false; }
    /// Whether a ray that is not under MIS sees the light itself. `rayType`: bits of RayType.
    /// `traceDepth`: bounces before this ray, 0 for a camera ray.
    virtual bool isVisibleTo(u32 rayType, int traceDepth) const = 0;
    /// False for a delta light (no area, no solid angle), which only `sample` finds. Others can be
    /// hit by rays too, so MIS weights the two ways.
    virtual bool hasExtent() const = 0;
    /// False if no shadow rays are traced to the light: it shines through geometry.
    virtual bool castsShadows() const { return true; }
    /// False if the light makes no highlights: only the diffuse part of BRDFs shows it.
    virtual bool affectsSpecular() const { return true; }
};

/// A plug-in that makes camera rays. `prepare` runs on one thread, all else on all render threads.
class CameraInterface : public PluginInterface {
public:
    static constexpr InterfaceID<CameraInterface> kInterfaceID{0x7E1C0003, "EXT_CAMERA"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// Called once before a render. Returns false with a text that says what is wrong.
    virtual bool prepare(int width, int height, std::string& error) = 0;
    /// The camera ray through (x, y), in pixels from the upper left corner, with its ray
    /// differentials per pixel to the right and down. Writes origin, direction, derivatives and
    /// screen position.
    virtual void makeRay(double x, double y, PelkContext& context) const = 0;
    /// Projects a point to the picture, as PelkCamera::mapToScreen answers: false behind the
    /// camera; `distance`, along the camera's axis, may be null.
    virtual bool project(const Point& point, ScreenPoint& screen, float* distance) const = 0;
    virtual Point getPosition() const = 0;
    /// Columns of the camera's axes in world space: right, up, backwards.
    virtual void getAxes(Vector axes[3]) const = 0;
};

}  // namespace Tarnkit
