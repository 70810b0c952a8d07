#include <gmock/gmock.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "render/geom_mesh.h"
#include "render/geom_shapes.h"
#include "render/mesh_loader.h"
#include "render/placement.h"
#include "render/plugin_holder.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

template <class Geometry>
struct Builder : PluginHolder<Geometry> {
    bool build() {
        this->startFrame();
        return this->plugin.buildMesh(mesh, error);
    }

    Mesh mesh;
    std::string error;
};

Vector areaVector(const Mesh& mesh, size_t triangle) {
    const auto& t = mesh.triangles[triangle];
    const Vector& a = mesh.positions[t[0]];
    return cross(mesh.positions[t[1]] - a, mesh.positions[t[2]] - a) * 0.5f;
}

double area(const Mesh& mesh) {
    double sum = 0;
    for (size_t i = 0; i < mesh.triangles.size(); ++i)
        sum += length(areaVector(mesh, i));
    return sum;
}

/// The volume inside a closed mesh; negative if its fronts look inward.
double volume(const Mesh& mesh) {
    double sum = 0;
    for (size_t i = 0; i < mesh.triangles.size(); ++i)
        sum += dotDouble(areaVector(mesh, i), mesh.positions[mesh.triangles[i][0]]) / 3.0;
    return sum;
}

/// Every vertex normal lies on the front side of the triangles around it, and is unit.
void expectNormalsInFront(const Mesh& mesh) {
    ASSERT_EQ(mesh.normals.size(), mesh.positions.size());
    for (size_t i = 0; i < mesh.triangles.size(); ++i) {
        const Vector front = areaVector(mesh, i);
        EXPECT_GT(length(front), 0.0f) << "collapsed triangle " << i;
        for (const u32 corner : mesh.triangles[i]) {
            EXPECT_GT(dot(mesh.normals[corner], front), 0.0f) << "triangle " << i;
            EXPECT_NEAR(length(mesh.normals[corner]), 1.0f, 1e-5f);
        }
    }
}

TEST(GeomSphere, IsABallWithTextureCoordinates) {
    Builder<GeomSphere> ball;
    ball.set("radius", 2.0f);
    ASSERT_TRUE(ball.build());
    const double pi = std::numbers::pi;
    EXPECT_NEAR(area(ball.mesh), 4 * pi * 4, 4 * pi * 4 * 2e-3);
    EXPECT_NEAR(volume(ball.mesh), 4 * pi * 8 / 3, 4 * pi * 8 / 3 * 2e-3);
    expectNormalsInFront(ball.mesh);
    for (const auto& t : ball.mesh.triangles) {
        // No triangle runs back over the seam.
        const float u[] = {ball.mesh.uvs[t[0]].u, ball.mesh.uvs[t[1]].u, ball.mesh.uvs[t[2]].u};
        EXPECT_LT(*std::max_element(u, u + 3) - *std::min_element(u, u + 3), 0.1f);
    }
    for (size_t i = 0; i < ball.mesh.positions.size(); ++i) {
        const bool isRight = ball.mesh.uvs[i].u == 0.25f && ball.mesh.uvs[i].v == 0.5f;
        EXPECT_TRUE(!isRight || ball.mesh.positions[i].x > 1.999f) << "u runs to the right";
    }
}

TEST(GeomBox, FacesOutwardAndNumbersItsSides) {
    Builder<GeomBox> box;
    box.set("size", Color(1, 2, 3));
    ASSERT_TRUE(box.build());
    EXPECT_NEAR(volume(box.mesh), 6.0, 1e-6);
    EXPECT_TRUE(box.mesh.normals.empty());
    const Vector sides[] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    for (size_t i = 0; i < box.mesh.triangles.size(); ++i) {
        const Vector front = areaVector(box.mesh, i);
        EXPECT_EQ(front * (1 / length(front)), sides[box.mesh.materialIDs[i]]);
    }
}

TEST(GeomSweep, BendsFromTheFloorIntoTheWall) {
    Builder<GeomSweep> sweep;
    ASSERT_TRUE(sweep.build());
    expectNormalsInFront(sweep.mesh);
    const double length = (10 - 2) + std::numbers::pi + (5 - 2);
    EXPECT_NEAR(area(sweep.mesh), 10 * length, 0.02);
    EXPECT_NEAR(sweep.mesh.uvs.back().v, length / 10, 1e-5);
}

TEST(Geometry, TurnsAsAsked) {
    const auto expectPlaced = [](Color scale, Color rotate, Color translate, Vector point,
                                 Vector expected) {
        Mesh mesh;
        mesh.positions = {point};
        Placement(scale, rotate, translate).apply(mesh);
        EXPECT_THAT(length(mesh.positions[0] - expected), testing::Le(1e-6f)) << rotate.g;
    };
    const float h = std::sqrt(0.5f);
    const Color one(1), none(0);
    expectPlaced(one, {0, 90, 0}, none, {1, 0, 0}, {0, 0, -1});
    expectPlaced(one, {0, 45, 0}, none, {1, 5, 0}, {h, 5, -h});
    expectPlaced(one, {90, 0, 0}, none, {0, 1, 0}, {0, 0, 1});
    expectPlaced(one, {0, 0, -270}, none, {1, 0, 0}, {0, 1, 0});
    expectPlaced(one, {90, 90, 90}, none, {0, 1, 0}, {0, 1, 0});        // X before Y before Z
    expectPlaced(one, {0, 450, 0}, none, {3e7f, 1, 0}, {0, 1, -3e7f});  // right angles are exact
    expectPlaced({2, 1, 1}, {0, 90, 0}, {1, 2, 3}, {1, 0, 0}, {1, 2, 1});
}

TEST(Geometry, StretchedAndMirroredObjectsKeepTheirFronts) {
    Builder<GeomSphere> ball;
    ball.set("segments", 32);
    ball.set("scale", Color(-4, 1, 0.25f));
    ASSERT_TRUE(ball.build());
    EXPECT_GT(volume(ball.mesh), 0.0);
    expectNormalsInFront(ball.mesh);
    for (size_t i = 0; i < ball.mesh.positions.size(); ++i) {
        // The gradient of (x/4)^2 + y^2 + (4z)^2 is the true normal.
        const Vector p = ball.mesh.positions[i];
        const Vector gradient = normalizeGuarded({p.x / 16, p.y, p.z * 16});
        EXPECT_NEAR(dot(gradient, ball.mesh.normals[i]), 1.0f, 1e-4f);
    }
}

/// What is said of a parameter value of which nothing can be built.
template <class Geometry, class V>
std::string refusal(const char* name, V value) {
    Builder<Geometry> builder;
    builder.set(name, value);
    return builder.build() ? "built" : builder.error;
}

TEST(Geometry, WhatCannotBeBuiltIsRefused) {
    for (const float width : {0.0f, -1.0f, INFINITY, NAN})
        EXPECT_THAT(refusal<GeomQuad>("width", width), HasSubstr("width"));
    EXPECT_THAT(refusal<GeomQuad>("height", -1.0f), HasSubstr("height"));
    EXPECT_THAT(refusal<GeomQuad>("scale", Color(1, 0, 1)), HasSubstr("scale"));
    EXPECT_THAT(refusal<GeomSphere>("segments", 4097), HasSubstr("segments"));
    EXPECT_THAT(refusal<GeomMesh>("file", ""), HasSubstr("file"));
    EXPECT_THAT(refusal<GeomSweep>("radius", 5.0f), HasSubstr("above \"radius\""));
}

// ---- files

constexpr const char* kObj =
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
    "usemtl a\nf 1/1 2/2 3/3 4/4\nusemtl b\nf 1/1 2/2 3/3\n";

std::string ply(const std::string& format, const std::string& body) {
    return "ply\nformat " + format +
           " 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
           "element face 1\nproperty list uchar int vertex_indices\nend_header\n" +
           body;
}

std::string plyBytes() {
    const float positions[9] = {0, 0, 0, 2, 0, 0, 0, 2, 0};
    const int indices[3] = {0, 1, 2};
    return std::string(reinterpret_cast<const char*>(positions), sizeof positions) + "\3" +
           std::string(reinterpret_cast<const char*>(indices), sizeof indices);
}

/// A triangle moved by 5 along X; its buffer, in another file, is 42 bytes long.
std::string gltf() {
    return R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
        "nodes": [{"mesh": 0, "translation": [5, 0, 0]}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
        "buffers": [{"byteLength": 42, "uri": "t.bin"}],
        "bufferViews": [{"buffer": 0, "byteOffset": 0, "byteLength": 36},
                        {"buffer": 0, "byteOffset": 36, "byteLength": 6}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [2, 2, 0]},
                      {"bufferView": 1, "componentType": 5123, "count": 3, "type": "SCALAR"}]})";
}

TEST(MeshLoader, ReadsEachFormat) {
    TemporaryDirectory dir;
    dir.write("q.obj", kObj);
    dir.write("open.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3");
    dir.write("relative.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1");
    dir.write("text.ply", ply("ascii", "0 0 0\n2 0 0\n0 2 0\n3 0 1 2"));
    dir.write("bytes.PLY", ply("binary_little_endian", plyBytes()));
    dir.write("t.gltf", gltf());
    dir.write("t.bin", plyBytes().substr(0, 36) + std::string("\0\0\1\0\2\0", 6));
    const struct {
        const char* name;
        size_t triangles;
        double area;
    } cases[] = {{"q.obj", 3, 1.5},    {"open.obj", 1, 0.5},  {"relative.obj", 1, 0.5},
                 {"text.ply", 1, 2.0}, {"bytes.PLY", 1, 2.0}, {"t.gltf", 1, 2.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Mesh mesh;
        std::string error;
        ASSERT_TRUE(loadMesh(dir.file(c.name), true, mesh, error)) << error;
        EXPECT_EQ(mesh.triangles.size(), c.triangles);
        EXPECT_NEAR(area(mesh), c.area, 1e-6);
        expectNormalsInFront(mesh);
    }
    Mesh mesh;
    std::string error;
    ASSERT_TRUE(loadMesh(dir.file("q.obj"), false, mesh, error));
    EXPECT_THAT(mesh.materialIDs, ElementsAre(0, 0, 1));
    EXPECT_EQ(mesh.uvs.size(), mesh.positions.size());
    EXPECT_TRUE(mesh.normals.empty());
    ASSERT_TRUE(loadMesh(dir.file("t.gltf"), false, mesh, error));
    EXPECT_GE(mesh.positions[0].x, 5.0f) << "node not in its place";
}

TEST(MeshLoader, FilesThatAreMissingOrBrokenAreRefused) {
    TemporaryDirectory dir;
    const std::string bytes = ply("binary_little_endian", plyBytes());
    const struct {
        const char *what, *name;
        std::string content;
    } cases[] = {
        {"no file", "none.obj", "missing"},
        {"no name", "", "missing"},
        {"ending", "m.stl", "solid"},
        {"empty", "m.obj", ""},
        {"no faces", "m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n"},
        {"cut among vertices", "m.obj", std::string(kObj).substr(0, 20)},
        {"cut inside a face", "m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nf 1 2"},
        {"cut before the last vertices are used", "m.obj",
         "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 3"},
        {"index too large", "m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 4\n"},
        {"not finite", "m.obj", "v 0 0 0\nv 1 0 0\nv 0 nan 0\nf 1 2 3\n"},
        {"no PLY", "m.ply", "text"},
        {"head cut", "m.ply", bytes.substr(0, 50)},
        {"rows of text missing", "m.ply", ply("ascii", "0 0 0\n2 0 0\n0 2 0\n3 0 1")},
        {"bytes missing", "m.ply", bytes.substr(0, bytes.size() - 1)},
        {"face without corners", "m.ply", ply("ascii", "0 0 0\n2 0 0\n0 2 0\n0\n")},
        {"index below 0", "m.ply", ply("ascii", "0 0 0\n2 0 0\n0 2 0\n3 0 1 -2\n")},
        {"huge count", "m.ply",
         ply("binary_big_endian", plyBytes().substr(0, 36) + std::string("\xff", 1))},
        {"buffer missing", "m.gltf", gltf()},
        {"JSON cut", "m.gltf", gltf().substr(0, 300)},
        {"bytes that are no glTF", "m.glb", "glTF\2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        if (!c.content.starts_with("missing"))
            dir.write(c.name, c.content);
        Mesh mesh;
        std::string error;
        EXPECT_FALSE(loadMesh(dir.file(c.name), true, mesh, error));
        EXPECT_THAT(error, HasSubstr(dir.file(c.name)));
        EXPECT_GT(error.size(), dir.file(c.name).size() + 15) << "no reason: " << error;
    }
}

}  // namespace
}  // namespace Tarnkit
