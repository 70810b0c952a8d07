#pragma once

#include <vector>

#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

/// The triangles that rays meet, of one object in world space or of several equal ones in a space
/// of their own (SceneObject::place). Constant while frames are rendered.
struct Shape {
    Mesh mesh;
    std::vector<Vector> faceNormals;  ///< unit, one per triangle, in the mesh's space
};

/// The geometric normal of each triangle; of one without area, what normalizeGuarded makes of 0.
std::vector<Vector> faceNormalsOf(const Mesh& mesh);

/// The middle of the smallest box along the axes that holds all vertices, and the half of its
/// sides; 0 for a mesh without vertices.
struct MeshBox {
    Vector centre, halfSides;
};
MeshBox boxOf(const Mesh& mesh);

}  // namespace Tarnkit
