#include "pelk/host/trace/surface_uv.h"

#include <cmath>

#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/sampling.h"
#include "pelk/host/trace/scene_object.h"
#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

namespace {

/// Twice the signed area of the sub-triangle (p, a, b), by the unit normal of the whole.
double partArea(const Point& p, const Vector& a, const Vector& b, const Vector& normal) {
    const double ax = a.x - p.x, ay = a.y - p.y, az = a.z - p.z;
    const double bx = b.x - p.x, by = b.y - p.y, bz = b.z - p.z;
    return (ay * bz - az * by) * normal.x + (az * bx - ax * bz) * normal.y +
           (ax * by - ay * bx) * normal.z;
}

const std::vector<UV>& uvSet(const Mesh& mesh, int set) {
    const bool further = set > 0 && set <= static_cast<int>(mesh.furtherUVs.size());
    return further ? mesh.furtherUVs[set - 1] : mesh.uvs;
}

/// The tangents dp/du and dp/dv of a triangle. Returns false if its UVs are missing or degenerate;
/// almost degenerate ones may give tangents that aren't finite.
bool uvAxes(const SceneObject& object, int set, u32 triangle, Vector& alongU, Vector& alongV) {
    const Mesh& mesh = object.shape->mesh;
    const std::vector<UV>& uvs = uvSet(mesh, set);
    if (uvs.empty())
        return false;
    const auto& corners = mesh.triangles[triangle];
    const UV &a = uvs[corners[0]], &b = uvs[corners[1]], &c = uvs[corners[2]];
    const float u1 = b.u - a.u, v1 = b.v - a.v, u2 = c.u - a.u, v2 = c.v - a.v;
    const float area = u1 * v2 - u2 * v1;
    if (!(area != 0.0f))
        return false;
    Vector e1 = mesh.positions[corners[1]] - mesh.positions[corners[0]];
    Vector e2 = mesh.positions[corners[2]] - mesh.positions[corners[0]];
    if (object.place) {
        e1 = object.place->direction(e1);
        e2 = object.place->direction(e2);
    }
    alongU = (e1 * v2 - e2 * v1) * (1.0f / area);
    alongV = (e2 * u1 - e1 * u2) * (1.0f / area);
    return true;
}

/// Writes the map to coordinates along `u`, `v` and `n`, the inverse of the matrix of these three:
/// its rows are the gradients of the coordinates. Returns false if there is none in floats.
bool frameAlong(const Vector& u, const Vector& v, const Vector& n, Transform& out) {
    const float inverse = 1.0f / dot(cross(u, v), n);
    const Matrix m =
        transposed({{cross(v, n) * inverse, cross(n, u) * inverse, cross(u, v) * inverse}});
    // The sum of the squares of all elements, as whatever isn't finite shows in it.
    float sum = 0.0f;
    for (const Vector& column : m.columns)
        sum += dot(column, column);
    out = {m.columns[0], m.columns[1], m.columns[2], {}};
    return std::isfinite(sum);
}

}  // namespace

UV surfaceUV(const PelkContext& context, int set) {
    const RenderContext& hit = hostContext(context);
    if (!hit.object || hit.object->shape->mesh.uvs.empty())
        return {};
    const SceneObject& object = *hit.object;
    const Mesh& mesh = object.shape->mesh;
    const std::vector<UV>& uvs = uvSet(mesh, set);
    const auto& corners = mesh.triangles[hit.triangle];
    const Vector& n = object.shape->faceNormals[hit.triangle];
    const Vector &a = mesh.positions[corners[0]], &b = mesh.positions[corners[1]],
                 &c = mesh.positions[corners[2]];
    // Barycentric coordinates by areas, not those of the hit: hitPoint may have been moved along
    // the surface since, as for the finite differences of a bump map.
    const Point at = object.place ? object.place->toObject(hit.hitPoint) : hit.hitPoint;
    const double wa = partArea(at, b, c, n), wb = partArea(at, c, a, n), wc = partArea(at, a, b, n),
                 sum = wa + wb + wc;
    if (!(sum > 0.0))
        return uvs[corners[0]];
    const UV &ua = uvs[corners[0]], &ub = uvs[corners[1]], &uc = uvs[corners[2]];
    return {static_cast<float>((wa * ua.u + wb * ub.u + wc * uc.u) / sum),
            static_cast<float>((wa * ua.v + wb * ub.v + wc * uc.v) / sum)};
}

Transform surfaceFrame(const PelkContext& context, int set) {
    const RenderContext& hit = hostContext(context);
    // flippedSide has negated the normal for shading; the UV frame stays that of the front.
    const Vector n = hit.flippedSide ? -hit.normal : hit.normal;
    Vector u, v;
    Transform frame;
    if (hit.object && uvAxes(*hit.object, set, hit.triangle, u, v) && frameAlong(u, v, n, frame))
        return frame;
    makeBasis(n, u, v);
    return frameAlong(u, v, n, frame) ? frame : Transform();
}

}  // namespace Tarnkit
