#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/host/trace/interfaces.h"
#include "pelk/host/trace/scene_object.h"

struct RTCSceneTy;
struct RTCDeviceTy;
struct RTCGeometryTy;

namespace Tarnkit {

class RenderContext;

/// Any-hit callback of a shadow ray, for transparent shadows.
class ShadowVisitor {
public:
    /// Called for each surface in the way, in no order. `u`, `v`: barycentric, of the second and
    /// third vertex. Returns false once nothing of the light is left, which ends the ray; so does
    /// what it throws, which goes on to the caller of walkShadow.
    virtual bool visit(u32 object, u32 triangle, float u, float v, float distance) = 0;

protected:
    ~ShadowVisitor() = default;
};

/// Whether a ray may be asked for: Embree ends the program over one that is NaN, infinite or far
/// out. Geometry lies within 1e18 along each axis, so the squared distance of a corner, 3e36, is
/// the least that must be let through; Embree takes 1.8e18 along an axis.
inline bool isTraceable(const Point& origin, const Vector& direction, double minT) {
    constexpr double kMost = 3.2e36;
    const double squared = origin.x * origin.x + origin.y * origin.y + origin.z * origin.z;
    return squared < kMost && dot(direction, direction) < static_cast<float>(kMost) && minT >= 0.0;
}

/// Ray-triangle intersection by Embree. After build, any number of threads may ask at once.
/// Against self-intersection a hit on the triangle that a ray leaves is ignored, since a flat
/// triangle can't be hit again from its own plane. For the triangles beside it, which share an edge
/// or lie upon it, rays start a few rounding steps of their coordinates off the origin. No ray
/// passes between triangles that share an edge or a corner (triangle_rim.h).
class Intersector {
public:
    Intersector();
    ~Intersector();
    Intersector(const Intersector&) = delete;
    Intersector& operator=(const Intersector&) = delete;

    /// Takes over the triangles of all objects, whose shapes must stay where they are. One with a
    /// place of its own becomes an instance: its shape is built once for all objects that share it.
    /// Returns false with a text that says what went wrong. Lack of memory or threads is an
    /// ExceptionMsg.
    bool build(const std::vector<std::unique_ptr<SceneObject>>& objects, std::string& error);
    SceneBounds bounds() const;

    // Both are asked for rays that isTraceable lets through alone.

    /// The nearest hit in the ray's interval (rayMinT, rayMaxT), but not on hidden objects: writes
    /// `object`, the triangle and its barycentric coordinates, and returns the distance; -1 without
    /// one.
    float closest(const RenderContext& ray, u32& object, RenderContext& hit) const;

    /// Shows `visitor` every surface between the ray's origin and `distance`, in any order and
    /// each once, until it says that the light is used up. Returns false then.
    bool walkShadow(const Point& origin, const Vector& direction, double distance, u32 skipObject,
                    u32 skipTriangle, ShadowVisitor& visitor) const;

private:
    void clear();
    /// The geometry by which an object enters the scene: its triangles, or an instance of those
    /// that it shares.
    RTCGeometryTy* newGeometry(const SceneObject& object);

    RTCDeviceTy* device = nullptr;
    RTCSceneTy* scene = nullptr;
    /// The triangles of instances, each once.
    std::unordered_map<const Shape*, RTCSceneTy*> shapeScenes;
    std::vector<u32> numbers;  // 0, 1, 2, ...: the index buffer of all geometry
    bool isWhole = true;       // false amid a build and after a failed one
};

}  // namespace Tarnkit
