#pragma once

#include <string>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"
#include "pelk/contract/renderer.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

/// A plug-in that puts triangles into the scene.
class GeometryInterface : public PluginInterface {
public:
    static constexpr InterfaceID<GeometryInterface> kInterfaceID{0x7E1C0001, "EXT_GEOMETRY"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Makes the triangles, in world space. Returns false with a text that says what is wrong.
    /// Called once before a render, when parameters are up to date.
    virtual bool buildMesh(Mesh& mesh, std::string& error) = 0;
    /// The plug-in whose EXT_MATERIAL shades the triangles; may be null.
    virtual PluginBase* getMaterial() = 0;
    /// The number by which the renderer knows the object. Set before the frame begins.
    virtual void setRenderID(int id) = 0;
};

/// A sphere that holds the scene's geometry.
struct SceneBounds {
    Point centre;
    double radius = 1.0;
};

/// One sample of a light, seen from a point.
struct LightSample {
    Vector direction;       ///< unit, towards the light
    double distance = 0.0;  ///< kRayFar for a light at infinity
    Color radiance;         ///< along the direction; of a light without extent: irradiance / pi
    float density = 0.0f;   ///< per solid angle; 0 for a light without extent
};

/// Where a ray meets a light.
struct LightHit {
    double distance = 0.0;
    Color radiance;
    float density = 0.0f;  ///< with which `sample` would have chosen this direction
};

/// A plug-in that lights the scene. What it answers doesn't change while a frame is rendered.
class LightInterface : public PluginInterface {
public:
    static constexpr InterfaceID<LightInterface> kInterfaceID{0x7E1C0002, "EXT_LIGHT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// Called once before a render, when parameters and geometry are up to date. Returns false
    /// with a text that says what is wrong.
    virtual bool prepare(const SceneBounds& bounds, std::string& error) = 0;
    /// Chooses a direction by two numbers below 1. Returns false if the point gets no light.
    virtual bool sample(PelkContext& context, float random1, float random2, LightSample& out) = 0;
    /// Meets the ray at a distance in (minT, maxT); a light at infinity is met at kRayFar if
    /// maxT is that. Lights without extent are never met.
    virtual bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                           LightHit& out) = 0;
    /// A light outside the scene, met by rays that meet nothing else.
    virtual bool isInfinite() const { return false; }
    /// A light that surrounds the scene, and is left out where the environment is overridden.
    virtual bool isDome() const { return false; }
    /// Not 0 if rays of the type see the light itself; `rayType` and `traceDepth` of the ray.
    virtual bool isVisibleTo(u32 rayType, int traceDepth) const = 0;
    /// Not 0 if rays can meet the light at all, so that two ways of finding it must be weighted.
    virtual bool hasExtent() const = 0;
    virtual bool castsShadows() const { return true; }
    virtual bool affectsSpecular() const { return true; }
};

/// A plug-in that looks at the scene.
class CameraInterface : public PluginInterface {
public:
    static constexpr InterfaceID<CameraInterface> kInterfaceID{0x7E1C0003, "EXT_CAMERA"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }

    /// Called once before a render. Returns false with a text that says what is wrong.
    virtual bool prepare(int width, int height, std::string& error) = 0;
    /// The ray through a place on the picture, in pixels from the upper left corner, and its
    /// derivatives by one pixel to the right and one down. Writes ray fields only.
    virtual void makeRay(double x, double y, PelkContext& context) const = 0;
    /// Answers of PelkCamera::mapToScreen.
    virtual bool project(const Point& point, ScreenPoint& screen, float* distance) const = 0;
    virtual Point getPosition() const = 0;
    /// Columns of the camera's axes in world space: right, up, backwards.
    virtual void getAxes(Vector axes[3]) const = 0;
};

}  // namespace Tarnkit
