// What a hit object tells of its faces.

#include <gtest/gtest.h>

#include "render/geom_shapes.h"
#include "render/plugin_holder.h"
#include "render/surface_uv.h"
#include "render/textures.h"

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
    names.intern("of another object");
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
    EXPECT_NE(names.intern("side").id, names.intern("top").id);
}

/// The frame must foretell how texture coordinates change along the surface.
template <class GetUV>
void expectLeadsTo(const Transform& frame, RenderContext& hit, GetUV getUV) {
    const Vector n = hit.normal, way = normalizeGuarded(cross(n, {0.3f, 0.5f, -0.8f})) * 0.01f;
    const auto before = getUV();
    hit.hitPoint = hit.hitPoint + way;
    const auto after = getUV();
    const auto mapped = [&](Vector v) {
        return frame.axisX * v.x + frame.axisY * v.y + frame.axisZ * v.z;
    };
    EXPECT_NEAR(mapped(way).x, after.x - before.x, 2e-5f);
    EXPECT_NEAR(mapped(way).y, after.y - before.y, 2e-5f);
    EXPECT_NEAR(mapped(way).z, 0.0f, 1e-6f);
    EXPECT_NEAR(mapped(n).z, 1.0f, 1e-5f) << "out of the surface";
}

TEST(HitObject, FramesLeadFromTheWorldToTextureCoordinates) {
    ShapeHit<GeomQuad> quad;
    quad.set("scale", Color(2, 3, -1));
    quad.set("rotate", Color(20, 70, 5));
    for (const bool flipped : {false, true}) {
        RenderContext& hit = quad.at(1);
        const auto plain = [&] { return Vector(surfaceUV(hit).u, surfaceUV(hit).v, 0); };
        hit.flippedSide = flipped;
        const Vector outward = hit.normal;
        hit.normal = flipped ? -outward : outward;
        const Transform frame = quad.plugin.getSurfaceFrame(hit, -1);
        hit.normal = outward;
        expectLeadsTo(frame, hit, plain);
    }
    PluginHolder<UVWGenMap> map;
    map.set("scale", Color(5, -2, 1));
    map.set("rotation", 30.0f);
    map.set("uv_set", 1);
    map.startFrame();
    RenderContext& hit = quad.at(0);
    quad.object.mesh.furtherUVs = {{{9, 9}, {9, 8}, {7, 8}, {7, 9}}};
    int valid = 0;
    const Transform frame = map.plugin.getTangentFrame(hit, valid);
    EXPECT_EQ(valid, 1);
    expectLeadsTo(frame, hit, [&] { return map.plugin.getUVW(hit); });
    quad.object.mesh.uvs.clear();
    quad.object.mesh.furtherUVs.clear();
    EXPECT_NEAR(length(surfaceFrame(hit).axisX), 1.0f, 1e-5f) << "any directions, but whole ones";
    // Directions of the object follow its scale and rotation, wherever it stands.
    const Vector edge = quad.object.mesh.positions[1] - quad.object.mesh.positions[0];
    EXPECT_NEAR(length(quad.plugin.objectToWorld(hit, {1, 0, 0}) - edge), 0.0f, 1e-5f);
}

}  // namespace
}  // namespace Tarnkit
