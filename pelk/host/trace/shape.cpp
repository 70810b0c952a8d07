#include "pelk/host/trace/shape.h"

#include <algorithm>

#include "pelk/shading_math/differential.h"

namespace Tarnkit {

std::vector<Vector> faceNormalsOf(const Mesh& mesh) {
    std::vector<Vector> normals;
    normals.reserve(mesh.triangles.size());
    for (const auto& t : mesh.triangles) {
        const Vector &a = mesh.positions[t[0]], &b = mesh.positions[t[1]],
                     &c = mesh.positions[t[2]];
        normals.push_back(normalizeGuarded(cross(b - a, c - a)));
    }
    return normals;
}

MeshBox boxOf(const Mesh& mesh) {
    if (mesh.positions.empty())
        return {};
    Vector low = mesh.positions[0], high = low;
    for (const Vector& p : mesh.positions) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    return {low * 0.5f + high * 0.5f, high * 0.5f - low * 0.5f};
}

}  // namespace Tarnkit
