// What a hit object tells of its faces.

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace Tarnkit
