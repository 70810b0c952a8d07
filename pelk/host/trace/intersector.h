#pragma once

#include <memory>
#include <string>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/host/trace/interfaces.h"
#include "pelk/host/trace/scene_object.h"

struct RTCSceneTy;
struct RTCDeviceTy;

namespace Tarnkit {

class RenderContext;

/// Asked by a shadow ray for each surface that stands in its way.
class ShadowVisitor {
public:
    /// Returns false if the light is used up.
    virtual bool visit(u32 object, u32 triangle, float u, float v, float distance) = 0;

protected:
    ~ShadowVisitor() = default;
};

/// Finds where rays meet the triangles of the scene. Any number of threads may ask at once.
/// A hit on the triangle that a ray leaves is passed over, since rays start on the surface itself.
class Intersector {
public:
    Intersector();
    ~Intersector();
    Intersector(const Intersector&) = delete;
    Intersector& operator=(const Intersector&) = delete;

    /// Takes over the triangles of all objects, whose meshes must stay where they are. Returns
    /// false with a text that says what went wrong.
    bool build(const std::vector<std::unique_ptr<SceneObject>>& objects, std::string& error);
    SceneBounds bounds() const;

    /// The nearest hit in the ray's interval: fills object number, triangle and weights, and
    /// returns its distance, or a negative number if there is none.
    float closest(const RenderContext& ray, u32& object, RenderContext& hit) const;

    /// Shows `visitor` every surface between the ray's origin and `distance`, in any order and
    /// each once, until it says that the light is used up. Returns false then.
    bool walkShadow(const Point& origin, const Vector& direction, double distance, u32 skipObject,
                    u32 skipTriangle, ShadowVisitor& visitor) const;

private:
    RTCDeviceTy* device = nullptr;
    RTCSceneTy* scene = nullptr;
};

}  // namespace Tarnkit
