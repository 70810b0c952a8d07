#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "pelk/host/trace/interfaces.h"
#include "pelk/host/trace/scene_object.h"

namespace Tarnkit {

/// Makes the shapes of a scene's objects, equal ones once. Objects that share a shape of more than
/// a few triangles are instances of it. All others get triangles of their own in world space, as
/// rays meet those faster than instances. Lives while objects are built.
class ShapeLibrary {
public:
    /// With this many triangles a shape that several objects share is instanced: it saves memory
    /// then, and costs rays little.
    static constexpr std::size_t kLeastInstanced = 64;

    /// Takes down how many of the geometries share each shape. Shapes go to `shapes`, which must
    /// outlive this.
    ShapeLibrary(const std::vector<GeometryInterface*>& geometries,
                 std::vector<std::unique_ptr<Shape>>& shapes);

    /// Writes shape and place of the object that geometry `index` makes, one after the other in
    /// their order. Returns false with a text that says what is wrong.
    bool makeShape(std::size_t index, SceneObject& object, std::string& error);

private:
    /// What equal geometries share.
    struct Entry {
        u32 uses = 0;
        std::unique_ptr<Mesh> mesh;  ///< in object space, to be copied for each object
        const Shape* instanced = nullptr;
        Vector origin;  ///< that of the instanced shape's space, in object space
        MeshBox box;    ///< around the instanced shape, in its space
    };

    bool build(Entry& entry, GeometryInterface& geometry, std::string& error);
    const Shape* keep(Mesh mesh);

    const std::vector<GeometryInterface*>& geometries;
    std::vector<std::unique_ptr<Shape>>& shapes;
    std::unordered_map<std::string, Entry> byKey;
    std::vector<Entry*> entries;  ///< of each geometry; null for one that is like no other
};

}  // namespace Tarnkit
