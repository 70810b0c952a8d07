#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <vector>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/confinement.h"
#include "pelk/host/plugins/geom_sphere.h"
#include "pelk/host/plugins/image_source.h"
#include "pelk/host/plugins/mesh_loader.h"
#include "pelk/host/trace/placement.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

Vector areaVector(const Mesh& mesh, std::size_t triangle) {
    const auto& t = mesh.triangles[triangle];
    const Vector& a = mesh.positions[t[0]];
    return cross(mesh.positions[t[1]] - a, mesh.positions[t[2]] - a) * 0.5f;
}

/// The volume inside a closed mesh; negative if its fronts look inward.
double volume(const Mesh& mesh) {
    double sum = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
        sum += dotDouble(areaVector(mesh, i), mesh.positions[mesh.triangles[i][0]]) / 3.0;
    return sum;
}

/// Every vertex normal lies on the front side of the triangles around it, and is unit.
void expectNormalsInFront(const Mesh& mesh) {
    ASSERT_EQ(mesh.normals.size(), mesh.positions.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const Vector front = areaVector(mesh, i);
        EXPECT_GT(length(front), 0.0f) << "collapsed triangle " << i;
        for (const u32 corner : mesh.triangles[i]) {
            EXPECT_GT(dot(mesh.normals[corner], front), 0.0f) << "triangle " << i;
            EXPECT_NEAR(length(mesh.normals[corner]), 1.0f, 1e-5f);
        }
    }
}

TEST(GeomSphere, IsABallThatKeepsItsFrontsWhenStretchedAndMirrored) {
    PluginHolder<GeomSphere> ball{{"radius", 2.0f}, {"scale", Color(-4, 1, 0.25f)}};
    const Mesh mesh = ball.build();
    const double expected = 4 * std::numbers::pi * 8 / 3;
    EXPECT_NEAR(volume(mesh), expected, expected * 2e-3);
    expectNormalsInFront(mesh);
    for (std::size_t i = 0; i < mesh.positions.size(); ++i) {
        // The gradient of (x/4)^2 + y^2 + (4z)^2 is the true normal.
        const Vector p = mesh.positions[i];
        const Vector gradient = normalizeGuarded({p.x / 16, p.y, p.z * 16});
        EXPECT_NEAR(dot(gradient, mesh.normals[i]), 1.0f, 1e-4f);
    }
    for (const auto& t : mesh.triangles) {
        const float u[] = {mesh.uvs[t[0]].u, mesh.uvs[t[1]].u, mesh.uvs[t[2]].u};
        EXPECT_LT(*std::max_element(u, u + 3) - *std::min_element(u, u + 3), 0.1f) << "seam";
    }
}

TEST(Geometry, TurnsAsAsked) {
    const Color one(1), none(0);
    const struct {
        Color scale, rotate, translate;
        Vector from, to;
    } cases[] = {
        {one, {90, 0, 0}, none, {0, 1, 0}, {0, 0, 1}},
        {one, {0, 0, -270}, none, {1, 0, 0}, {0, 1, 0}},
        {one, {90, 90, 90}, none, {0, 1, 0}, {0, 1, 0}},        // X before Y before Z
        {one, {0, 450, 0}, none, {3e7f, 1, 0}, {0, 1, -3e7f}},  // right angles are exact
        {{2, 1, 1}, {0, 90, 0}, {1, 2, 3}, {1, 0, 0}, {1, 2, 1}},
    };
    for (const auto& c : cases) {
        Mesh mesh;
        mesh.positions = {c.from};
        Placement(c.scale, c.rotate, c.translate).apply(mesh);
        EXPECT_LE(length(mesh.positions[0] - c.to), 1e-6f) << c.rotate.g;
    }
}

constexpr const char* kObj =
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
    "usemtl a\nf 1/1 2/2 3/3 4/4\nusemtl b\nf 1/1 2/2 3/3\n";

std::string ply(const std::string& format, const std::string& body, const std::string& more = "") {
    return "ply\nformat " + format +
           " 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n" + more +
           "element face 1\nproperty list uchar int vertex_indices\nend_header\n" + body;
}

/// The bytes of some vertices and of one triangle.
std::string plyBytes(const std::vector<float>& vertices = {0, 0, 0, 2, 0, 0, 0, 2, 0}) {
    const int indices[3] = {0, 1, 2};
    return std::string(reinterpret_cast<const char*>(vertices.data()), vertices.size() * 4) + "\3" +
           std::string(reinterpret_cast<const char*>(indices), sizeof indices);
}

class MeshLoaderTest : public testing::Test {
protected:
    bool load(const std::string& name, bool withNormals = true) {
        mesh = {};
        error.clear();
        return loadMesh(dir.file(name), withNormals, mesh, error);
    }

    TemporaryDirectory dir;
    Mesh mesh;
    std::string error;
};

TEST_F(MeshLoaderTest, ReadsEachFormat) {
    const struct {
        const char* name;
        std::string content;
        double area;
    } cases[] = {{"q.obj", kObj, 0.5},
                 {"text.ply", ply("ascii", "0 0 0\n2 0 0\n0 2 0\n3 0 1 2"), 2.0},
                 {"bytes.PLY", ply("binary_little_endian", plyBytes()), 2.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        dir.write(c.name, c.content);
        ASSERT_TRUE(load(c.name)) << error;
        EXPECT_NEAR(length(areaVector(mesh, 0)), c.area, 1e-6);
        expectNormalsInFront(mesh);
    }
    ASSERT_TRUE(load("q.obj", false));
    EXPECT_THAT(mesh.parts, testing::ElementsAre(0, 0, 1));
    EXPECT_EQ(mesh.uvs.size(), mesh.positions.size());
    EXPECT_TRUE(mesh.normals.empty());

    dir.write("nan.ply",
              ply("binary_little_endian",
                  plyBytes({0, 0, 0, NAN, 0.5f, 1, 0, 0, 1, -INFINITY, 0, 1, 0, 0.25f, 0.5f}),
                  "property float s\nproperty float t\n"));
    ASSERT_TRUE(load("nan.ply", false)) << error;
    ASSERT_EQ(mesh.uvs.size(), 3u);
    const UV expected[] = {{0, 0}, {0, 0}, {0.25f, 0.5f}};
    for (int i = 0; i < 3; ++i) {
        const UV uv = mesh.uvs[mesh.triangles[0][i]];
        EXPECT_TRUE(uv.u == expected[i].u && uv.v == expected[i].v) << i << ": " << uv.u;
    }
}

TEST_F(MeshLoaderTest, ConfinedMeshesLeadNowhereElse) {
    namespace fs = std::filesystem;
    const std::string triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    const auto gltf = [](const std::string& uri) {
        return R"({"asset": {"version": "2.0"}, "buffers": [{"uri": ")" + uri + R"(",
            "byteLength": 36}], "bufferViews": [{"buffer": 0, "byteLength": 36}],
            "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}],
            "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
            "nodes": [{"mesh": 0}], "scenes": [{"nodes": [0]}], "scene": 0})";
    };
    for (const char* folder : {"in", "in/own", "in2"})
        fs::create_directory(dir.file(folder));
    fs::create_symlink("../in2", dir.file("in/link"));
    fs::create_symlink("own/own.obj", dir.file("in/inner.obj"));
    const float far[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    dir.write("in2/b.bin", std::string(reinterpret_cast<const char*>(far), sizeof far));
    dir.write("in2/m.mtl", "newmtl a\n");
    for (const char* name : {"in2/m.obj", "in/own/own.obj"})
        dir.write(name, triangle);
    dir.write("in/a.obj", "mtllib ../in2/m.mtl\n" + triangle);
    dir.write("in/b.obj", "mtllib link/m.mtl\n" + triangle);
    dir.write("in/a.gltf", gltf("../in2/b.bin"));
    dir.write("in/b.gltf", gltf("link/b.bin"));
    const std::string strangers[] = {"in2/m.obj", "in/link/m.obj", "in/own/../link/../in2/m.obj",
                                     "in/a.obj",  "in/b.obj",      "in/a.gltf",
                                     "in/b.gltf"};
    for (const std::string& name : strangers) {
        EXPECT_TRUE(load(name)) << error;
        const Confinement confined({dir.file("in")});
        EXPECT_FALSE(load(name)) << name;
        EXPECT_THAT(error, testing::HasSubstr("outside of the folders that --confine")) << name;
    }
    const Confinement confined({dir.file("none"), dir.file("in")});
    for (const char* name : {"in/own/own.obj", "in/inner.obj", "in/link/../in/own/own.obj"})
        EXPECT_TRUE(load(name)) << error;
    for (const char* name : {"in2/none.obj", "in/../none.obj"}) {
        EXPECT_FALSE(load(name));
        EXPECT_THAT(error, testing::HasSubstr("outside of the folders")) << "tells what is there";
    }
    ImageSource image;
    EXPECT_FALSE(image.open(dir.file("in2/b.png"), ColorSpace::Auto, error));
    EXPECT_THAT(error, testing::HasSubstr("outside of the folders"));
}

TEST_F(MeshLoaderTest, FilesThatAreMissingOrBrokenAreRefused) {
    const std::string points = "v 0 0 0\nv 1 0 0\nv 0 1 0\n", plyPoints = "0 0 0\n2 0 0\n0 2 0\n";
    const std::string bytes = ply("binary_little_endian", plyBytes());
    const std::string head{"glTF\2\0\0\0", 8}, cut = "cut short";
    const struct {
        const char *what, *name;
        std::string content;
        std::string reason = "";
    } cases[] = {
        {"ending", "m.stl", "solid"},
        {"cut among vertices", "m.obj", points},
        {"cut inside a face", "m.obj", points + "f 1 2 3\nf 1 2"},
        {"cut before the last vertex is used", "m.obj", points + "v 1 1 0\nf 1 2 3"},
        {"index too large", "m.obj", points + "f 1 2 4\n"},
        {"not finite", "m.obj", "v 0 0 0\nv 1 0 0\nv 0 nan 0\nf 1 2 3\n"},
        {"head cut", "m.ply", bytes.substr(0, 50)},
        {"rows of text missing", "m.ply", ply("ascii", plyPoints + "3 0 1")},
        {"bytes missing", "m.ply", bytes.substr(0, bytes.size() - 1)},
        {"face without corners", "m.ply", ply("ascii", plyPoints + "0\n")},
        {"index below 0", "m.ply", ply("ascii", plyPoints + "3 0 1 -2\n")},
        {"huge count", "m.ply", ply("binary_big_endian", plyBytes().substr(0, 36) + "\xff")},
        {"bytes that are no glTF", "m.glb", "glTF\2"},
        {"glTF cut", "m.gltf", R"({"asset": {"version": "2.0")", cut},
        {"glb longer by its head", "m.glb", head + std::string("\xff\0\0\0", 4), cut},
        {"chunk cut", "m.glb", head + std::string("\x18\0\0\0\x05\0\0\0JSON{}  ", 16), cut},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        dir.write(c.name, c.content);
        EXPECT_FALSE(load(c.name));
        EXPECT_THAT(error, testing::HasSubstr(dir.file(c.name)));
        EXPECT_THAT(error, testing::HasSubstr(c.reason));
        EXPECT_GT(error.size(), dir.file(c.name).size() + 15) << "no reason: " << error;
    }
}

}  // namespace
}  // namespace Tarnkit
