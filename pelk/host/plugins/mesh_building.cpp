#include "pelk/host/plugins/mesh_building.h"

#include <cmath>

namespace Tarnkit {

namespace {

constexpr int kMaxSegments = 4096;  // keeps a ball below 17 million vertices

}  // namespace

bool checkSize(const char* name, float value, std::string& error) {
    if (value > 0.0f && std::isfinite(value))
        return true;
    error = std::string("\"") + name + "\" must be above 0";
    return false;
}

bool checkSegments(int segments, std::string& error) {
    if (segments >= 3 && segments <= kMaxSegments)
        return true;
    error = "\"segments\" must be 3 to " + std::to_string(kMaxSegments);
    return false;
}

void addVertex(Mesh& mesh, Vector position, Vector normal, UV uv) {
    mesh.positions.push_back(position);
    mesh.normals.push_back(normal);
    mesh.uvs.push_back(uv);
}

void addQuad(Mesh& mesh, u32 a, u32 b, u32 c, u32 d) {
    mesh.triangles.push_back({a, b, c});
    mesh.triangles.push_back({a, c, d});
}

void addRectangle(Mesh& mesh, Vector centre, Vector u, Vector v, int part) {
    const u32 first = static_cast<u32>(mesh.positions.size());
    const Vector normal = normalizeGuarded(cross(u, v));
    addVertex(mesh, centre - u - v, normal, {0, 0});
    addVertex(mesh, centre + u - v, normal, {1, 0});
    addVertex(mesh, centre + u + v, normal, {1, 1});
    addVertex(mesh, centre - u + v, normal, {0, 1});
    addQuad(mesh, first, first + 1, first + 2, first + 3);
    mesh.parts.insert(mesh.parts.end(), 2, part);
}

}  // namespace Tarnkit
