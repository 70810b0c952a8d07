// What a hit object tells of its faces.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/geom_box.h"
#include "pelk/host/plugins/geom_quad.h"
#include "pelk/host/plugins/uvwgen_map.h"
#include "pelk/host/trace/surface_uv.h"

namespace Tarnkit {
namespace {

/// A hit in the middle of a triangle of a shape.
template <class Shape>
class ShapeHit : public PluginHolder<Shape> {
public:
    RenderContext& at(u32 triangle) {
        std::string error;
        this->startFrame();
        Mesh& mesh = object.mesh;
        EXPECT_TRUE(this->plugin.buildMesh(mesh, error)) << error;
        const auto& t = mesh.triangles[triangle];
        const Vector a = mesh.positions[t[0]], b = mesh.positions[t[1]], c = mesh.positions[t[2]];
        object.faceNormals.resize(mesh.triangles.size());
        object.faceNormals[triangle] = normalizeGuarded(cross(b - a, c - a));
        context.object = &object;
        context.triangle = triangle;
        context.flippedSide = 0;
        context.normal = object.faceNormals[triangle];
        context.hitPoint = Point() + (a + b + c) * (1 / 3.0f);
        return context;
    }

    SceneObject object;
    RenderContext context;
};

TEST(HitObject, PartsHaveMaterialIDsAndShaderSetsByHandle) {
    ShapeHit<GeomBox> box;
    StringListParameter sets("shader_sets", {"side", "", "top", "side"});
    IntListParameter ids("material_ids", {10, 11, 12});
    box.plugin.setParameter(&sets);
    box.plugin.setParameter(&ids);
    StringTable& names = *box.renderer.getStringTable();
    const char* expected[] = {"side", nullptr, "top", "side", nullptr, nullptr};
    const int expectedIDs[] = {10, 11, 12, 0, 0, 0};
    EXPECT_EQ(box.plugin.getSurfaceMtlID(box.context), 0) << "no object was hit";
    for (u32 part = 0; part < 6; ++part) {
        RenderContext& hit = box.at(part * 2 + 1);
        StringHandle handle{99};
        box.plugin.getShaderSetName(handle, hit, 0);
        EXPECT_EQ(handle.id, names.intern(expected[part]).id) << part;
        EXPECT_EQ(box.plugin.getSurfaceMtlID(hit), expectedIDs[part]);
    }
}

TEST(HitObject, FramesLeadFromTheWorldToTextureCoordinates) {
    ShapeHit<GeomQuad> quad;
    quad.set("scale", Color(2, 3, -1));
    quad.set("rotate", Color(20, 70, 5));
    RenderContext& hit = quad.at(1);
    quad.object.mesh.furtherUVs = {{{9, 9}, {9, 8}, {7, 8}, {7, 9}}};
    PluginHolder<UVWGenMap> map;
    map.set("scale", Color(5, -2, 1));
    map.set("rotation", 30.0f);
    map.set("uv_set", 1);
    map.startFrame();
    int valid = 0;
    const Transform frame = map.plugin.getTangentFrame(hit, valid);
    EXPECT_EQ(valid, 1);
    const auto mapped = [&](Vector v) {
        return frame.axisX * v.x + frame.axisY * v.y + frame.axisZ * v.z;
    };
    // It must foretell how texture coordinates change along the surface.
    const Vector way = normalizeGuarded(cross(hit.normal, {0.3f, 0.5f, -0.8f})) * 0.01f;
    const Vector before = map.plugin.getUVW(hit);
    hit.hitPoint = hit.hitPoint + way;
    EXPECT_NEAR(length(map.plugin.getUVW(hit) - before - mapped(way)), 0.0f, 2e-5f);
    EXPECT_NEAR(mapped(hit.normal).z, 1.0f, 1e-5f) << "out of the surface";

    quad.object.mesh.uvs.clear();
    quad.object.mesh.furtherUVs.clear();
    EXPECT_NEAR(length(surfaceFrame(hit).axisX), 1.0f, 1e-5f) << "any directions, but whole ones";
}

/// The gradients of a triangle's coordinates along its plane, in double: g = a e1 + b e2 with
/// dot(g, e1) = change along e1 and dot(g, e2) = change along e2.
struct Gradients {
    double u[3], v[3];
};
Gradients gradientsOf(const Mesh& mesh, const std::vector<UV>& uvs, u32 triangle) {
    const auto& t = mesh.triangles[triangle];
    double e1[3], e2[3], a11 = 0, a12 = 0, a22 = 0;
    const Vector p[3] = {mesh.positions[t[0]], mesh.positions[t[1]], mesh.positions[t[2]]};
    const double from[] = {p[0].x, p[0].y, p[0].z}, first[] = {p[1].x, p[1].y, p[1].z},
                 second[] = {p[2].x, p[2].y, p[2].z};
    for (int i = 0; i < 3; ++i) {
        e1[i] = first[i] - from[i];
        e2[i] = second[i] - from[i];
        a11 += e1[i] * e1[i];
        a12 += e1[i] * e2[i];
        a22 += e2[i] * e2[i];
    }
    const double det = a11 * a22 - a12 * a12;
    const auto solve = [&](double d1, double d2, double* g) {
        const double a = (d1 * a22 - d2 * a12) / det, b = (d2 * a11 - d1 * a12) / det;
        for (int i = 0; i < 3; ++i)
            g[i] = a * e1[i] + b * e2[i];
    };
    Gradients g;
    const UV &o = uvs[t[0]], &p1 = uvs[t[1]], &p2 = uvs[t[2]];
    solve(double{p1.u} - o.u, double{p2.u} - o.u, g.u);
    solve(double{p1.v} - o.v, double{p2.v} - o.v, g.v);
    return g;
}

TEST(HitObject, FramesAndCoordinatesAgreeUnderTurnedAndMirroredInstances) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(-1, 1);
    const auto factor = [&] { return std::copysign(0.3f + std::fabs(unit(random)), unit(random)); };
    for (int round = 0; round < 200; ++round) {
        ShapeHit<GeomQuad> quad;
        quad.set("scale", Color(factor(), factor(), factor()));
        quad.set("rotate", Color(unit(random), unit(random), unit(random)) * 180.0f);
        quad.set("translate", Color(unit(random), unit(random), unit(random)) * 10.0f);
        RenderContext& hit = quad.at(static_cast<u32>(round) % 2);
        Mesh& mesh = quad.object.mesh;
        // The second set is mirrored and sheared as chance wants it.
        const float a = factor(), b = unit(random) * 0.2f, d = factor();
        mesh.furtherUVs = {{}};
        for (const UV& uv : mesh.uvs)
            mesh.furtherUVs[0].push_back({a * uv.u + b * uv.v + 5, d * uv.v - 3});
        for (const int channel : {-1, 0, 1, 2}) {
            const Transform frame = quad.plugin.getSurfaceFrame(hit, channel);
            const auto& uvs = channel == 1 ? mesh.furtherUVs[0] : mesh.uvs;
            const Gradients g = gradientsOf(mesh, uvs, hit.triangle);
            const Vector columns[] = {frame.axisX, frame.axisY, frame.axisZ};
            const Point start = hit.hitPoint;
            const Vector before = quad.plugin.getSurfaceUVW(hit, channel);
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(columns[i].x, g.u[i], 1e-4);
                EXPECT_NEAR(columns[i].y, g.v[i], 1e-4);
                // Beyond the edges of the face as well, and off its plane.
                const double way[] = {i == 0 ? 3.0 : 0.0, i == 1 ? 3.0 : 0.0, i == 2 ? 3.0 : 0.0};
                hit.hitPoint = {start.x + way[0], start.y + way[1], start.z + way[2]};
                const Vector after = quad.plugin.getSurfaceUVW(hit, channel);
                EXPECT_NEAR(after.x - before.x, 3 * g.u[i], 1e-4);
                EXPECT_NEAR(after.y - before.y, 3 * g.v[i], 1e-4);
                EXPECT_EQ(after.z, 0.0f);
                hit.hitPoint = start;
            }
            const Vector third{frame.axisX.z, frame.axisY.z, frame.axisZ.z};
            EXPECT_NEAR(length(third - hit.normal), 0.0f, 1e-5f);
            hit.flipSide();
            const Transform turned = quad.plugin.getSurfaceFrame(hit, channel);
            EXPECT_EQ(turned.axisX, frame.axisX) << "the frame of the front, whichever side is lit";
            hit.flipSide();
        }
    }
}

TEST(HitObject, UnusableCoordinatesGiveAFrameNonetheless) {
    const UV o{0.25f, 0.5f};
    const struct {
        const char* what;
        std::vector<UV> uvs;
        bool normalInFace = false;
    } cases[] = {
        {"none", {}},
        {"all the same", {o, o, o, o}},
        {"on a line", {{0, 0}, {1, 2}, {2, 4}, {3, 6}}},
        {"almost the same", {{0, 0}, {1e-30f, 0}, {1e-30f, 1e-30f}, {0, 1e-30f}}},
        {"an area of a denormal number", {{0, 0}, {1e-20f, 0}, {1e-20f, 1e-21f}, {0, 1e-21f}}},
        {"huge", {{0, 0}, {3e38f, 0}, {3e38f, 3e38f}, {0, 3e38f}}},
        {"a normal that lies in the face", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ShapeHit<GeomQuad> quad;
        RenderContext& hit = quad.at(0);
        quad.object.mesh.uvs = c.uvs;
        if (c.normalInFace)
            hit.normal =
                normalizeGuarded(quad.object.mesh.positions[1] - quad.object.mesh.positions[0]);
        const Vector uvw = quad.plugin.getSurfaceUVW(hit, -1);
        EXPECT_TRUE(std::isfinite(uvw.x) && std::isfinite(uvw.y));
        const Transform frame = quad.plugin.getSurfaceFrame(hit, -1);
        const Vector third{frame.axisX.z, frame.axisY.z, frame.axisZ.z};
        // An orthonormal frame about the normal: rows of length 1 at right angles.
        const Vector first{frame.axisX.x, frame.axisY.x, frame.axisZ.x};
        const Vector second{frame.axisX.y, frame.axisY.y, frame.axisZ.y};
        EXPECT_NEAR(length(third - hit.normal), 0.0f, 1e-5f);
        EXPECT_NEAR(length(first), 1.0f, 1e-5f);
        EXPECT_NEAR(length(cross(first, second) - third), 0.0f, 1e-5f);
    }

    ShapeHit<GeomQuad> quad;
    RenderContext& hit = quad.at(0);
    quad.object.mesh.uvs = {o, o, o, o};
    EXPECT_EQ(quad.plugin.getSurfaceUVW(hit, 0), Vector(o.u, o.v, 0)) << "still coordinates";
    quad.object.mesh.uvs.clear();
    EXPECT_EQ(quad.plugin.getSurfaceUVW(hit, 0), Vector());
    hit.normal = {};
    EXPECT_EQ(quad.plugin.getSurfaceFrame(hit, 0).axisX, Vector(1, 0, 0)) << "no normal at all";
}

}  // namespace
}  // namespace Tarnkit
