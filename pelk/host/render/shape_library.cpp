#include "pelk/host/render/shape_library.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "pelk/base/limits.h"

namespace Tarnkit {

namespace {

/// False for NaN too.
bool isInSpace(const Vector& p) {
    return std::fabs(p.x) < kRayFar && std::fabs(p.y) < kRayFar && std::fabs(p.z) < kRayFar;
}

bool fits(const Mesh& mesh) {
    return std::all_of(mesh.positions.begin(), mesh.positions.end(), isInSpace);
}

/// Whether all corners of the box around a mesh are in space where an instance puts them.
bool fits(const MeshBox& box, const Placement& place) {
    for (int corner = 0; corner < 8; ++corner) {
        const Vector& h = box.halfSides;
        const Vector p = box.centre + Vector(corner & 1 ? h.x : -h.x, corner & 2 ? h.y : -h.y,
                                             corner & 4 ? h.z : -h.z);
        if (!isInSpace(place.point(p) - Point()))
            return false;
    }
    return true;
}

/// Moves a mesh that lies far from its origin to it, and returns from where: within an instance
/// rays are as precise as its coordinates are small.
Vector moveToOrigin(Mesh& mesh) {
    const MeshBox box = boxOf(mesh);
    if (!(length(box.centre) > length(box.halfSides)))
        return {};
    for (Vector& p : mesh.positions)
        p -= box.centre;
    return box.centre;
}

}  // namespace

ShapeLibrary::ShapeLibrary(const std::vector<GeometryInterface*>& geometries_,
                           std::vector<std::unique_ptr<Shape>>& shapes_)
    : geometries(geometries_), shapes(shapes_) {
    for (GeometryInterface* geometry : geometries) {
        const std::string key = geometry->shapeKey();
        entries.push_back(key.empty() ? nullptr : &byKey[key]);
        if (entries.back())
            ++entries.back()->uses;
    }
}

bool ShapeLibrary::makeShape(std::size_t index, SceneObject& object, std::string& error) {
    GeometryInterface& geometry = *geometries[index];
    object.place = geometry.findPlace(error);
    if (!object.place)
        return false;
    Entry own;
    Entry& entry = entries[index] ? *entries[index] : own;
    if (!entry.mesh && !entry.instanced && !build(entry, geometry, error))
        return false;
    bool isInside;
    if (entry.instanced) {
        object.shape = entry.instanced;
        object.place->moveOrigin(entry.origin);
        isInside = fits(entry.box, *object.place);
    } else {
        Mesh mesh = entry.uses > 1 ? *entry.mesh : std::move(*entry.mesh);
        object.place->apply(mesh);
        object.place.reset();
        isInside = fits(mesh);
        object.shape = keep(std::move(mesh));
    }
    if (!isInside)
        error =
            "a vertex lies 1e18 or more from the origin, where no ray goes; expected less of "
            "\"scale\", \"translate\" or the size";
    return isInside;
}

bool ShapeLibrary::build(Entry& entry, GeometryInterface& geometry, std::string& error) {
    auto mesh = std::make_unique<Mesh>();
    if (!geometry.buildShape(*mesh, error))
        return false;
    if (entry.uses > 1 && mesh->triangles.size() >= kLeastInstanced) {
        entry.origin = moveToOrigin(*mesh);
        entry.box = boxOf(*mesh);
        entry.instanced = keep(std::move(*mesh));
    } else {
        entry.mesh = std::move(mesh);
    }
    return true;
}

const Shape* ShapeLibrary::keep(Mesh mesh) {
    auto shape = std::make_unique<Shape>();
    shape->mesh = std::move(mesh);
    shape->faceNormals = faceNormalsOf(shape->mesh);
    shapes.push_back(std::move(shape));
    return shapes.back().get();
}

}  // namespace Tarnkit
