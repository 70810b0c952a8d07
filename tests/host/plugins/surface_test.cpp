// What a hit object tells of its faces.

#include <cmath>
#include <random>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/geom_box.h"
#include "pelk/host/plugins/geom_quad.h"
#include "pelk/host/plugins/uvwgen_map.h"

namespace Tarnkit {
namespace {

/// A hit in the middle of a triangle of a shape.
template <class Geometry>
class ShapeHit : public PluginHolder<Geometry> {
public:
    RenderContext& at(u32 triangle) {
        Mesh& mesh = shape.mesh = this->build(false);
        std::string error;
        const Placement place = *this->plugin.findPlace(error);
        object.shape = &shape;
        object.place.reset();
        if (isInstance)
            object.place = place;
        else
            place.apply(mesh);
        const auto& t = mesh.triangles[triangle];
        const Vector a = mesh.positions[t[0]], b = mesh.positions[t[1]], c = mesh.positions[t[2]];
        shape.faceNormals = faceNormalsOf(mesh);
        context.object = &object;
        context.hitObject = &this->plugin;
        context.triangle = triangle;
        context.flippedSide = 0;
        context.normal = shape.faceNormals[triangle];
        const Vector middle = (a + b + c) * (1 / 3.0f);
        context.hitPoint = isInstance ? place.point(middle) : Point() + middle;
        if (isInstance)
            context.normal = place.normal(context.normal);
        return context;
    }

    bool isInstance = false;
    Shape shape;
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

TEST(HitObject, FramesAndCoordinatesAgreeUnderTurnedAndMirroredInstances) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(-1, 1);
    const auto factor = [&] { return std::copysign(0.3f + std::fabs(unit(random)), unit(random)); };
    PluginHolder<UVWGenMap> map{{"uv_set", 1},
                                {"scale", Color(2, 3, 1)},
                                {"rotation", 90.0f},
                                {"offset", Color(10, 20, 30)}};
    map.startFrame();
    for (int round = 0; round < 200; ++round) {
        ShapeHit<GeomQuad> quad;
        quad.isInstance = round % 3 == 0;
        quad.set("scale", Color(factor(), factor(), factor()));
        quad.set("rotate", Color(unit(random), unit(random), unit(random)) * 180.0f);
        quad.set("translate", Color(unit(random), unit(random), unit(random)) * 10.0f);
        RenderContext& hit = quad.at(static_cast<u32>(round) % 2);
        Mesh& mesh = quad.shape.mesh;
        mesh.furtherUVs = {{{9, 9}, {9, 8}, {7, 8}, {7, 9}}};  // mirrored
        const Vector uv = quad.plugin.getSurfaceUVW(hit, 1);
        const Vector mapped = map.plugin.getUVW(hit) - Vector(10 - 3 * uv.y, 20 + 2 * uv.x, 30);
        EXPECT_NEAR(length(mapped), 0.0f, 1e-5f);
        int valid = 0;
        const Vector way = map.plugin.getTangentFrame(hit, valid).axisX;
        const Vector x = quad.plugin.getSurfaceFrame(hit, 1).axisX;
        EXPECT_NEAR(length(way - Vector(-3 * x.y, 2 * x.x, x.z)), 0.0f, 1e-5f);
        EXPECT_EQ(valid, 1);
        for (const int channel : {-1, 0, 1, 2}) {
            const Transform frame = quad.plugin.getSurfaceFrame(hit, channel);
            const auto& uvs = channel == 1 ? mesh.furtherUVs[0] : mesh.uvs;
            const Point start = hit.hitPoint;
            for (const u32 corner : mesh.triangles[hit.triangle]) {
                const Vector& p = mesh.positions[corner];
                hit.hitPoint = quad.object.place ? quad.object.place->point(p) : Point() + p;
                const Vector uvw = quad.plugin.getSurfaceUVW(hit, channel);
                EXPECT_NEAR(length(uvw - Vector(uvs[corner].u, uvs[corner].v, 0)), 0.0f, 1e-4f);
            }
            hit.hitPoint = start;
            const Vector before = quad.plugin.getSurfaceUVW(hit, channel);
            // Beyond the edges of the face as well, and off its plane.
            const Vector ways[] = {{3, 0, 0}, {0, 3, 0}, {0, 0, 3}, hit.normal};
            const Vector columns[] = {frame.axisX, frame.axisY, frame.axisZ, Vector()};
            for (int i = 0; i < 4; ++i) {
                hit.hitPoint = start + ways[i];
                const Vector after = quad.plugin.getSurfaceUVW(hit, channel);
                EXPECT_NEAR(after.x - before.x, 3 * columns[i].x, 1e-4);
                EXPECT_NEAR(after.y - before.y, 3 * columns[i].y, 1e-4);
            }
            hit.hitPoint = start;
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
    } cases[] = {
        {"none", {}},
        {"all the same", {o, o, o, o}},
        {"on a line", {{0, 0}, {1, 2}, {2, 4}, {3, 6}}},
        {"an area of a denormal number", {{0, 0}, {1e-20f, 0}, {1e-20f, 1e-21f}, {0, 1e-21f}}},
        {"huge", {{0, 0}, {3e38f, 0}, {3e38f, 3e38f}, {0, 3e38f}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ShapeHit<GeomQuad> quad;
        RenderContext& hit = quad.at(0);
        quad.shape.mesh.uvs = c.uvs;
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
}

}  // namespace
}  // namespace Tarnkit
