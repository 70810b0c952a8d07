#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/plugins/plugin_holder.h"
#include "pelk/host/plugins/geom_sphere.h"
#include "pelk/host/plugins/mesh_loader.h"
#include "pelk/host/plugins/placement.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

Vector areaVector(const Mesh& mesh, std::size_t triangle) {
    const auto& t = mesh.triangles[triangle];
    const Vector& a = mesh.positions[t[0]];
    return cross(mesh.positions[t[1]] - a, mesh.positions[t[2]] - a) * 0.5f;
}

TEST(GeomSphere, IsABallThatKeepsItsFrontsWhenStretchedAndMirrored) {
    PluginHolder<GeomSphere> ball;
    ball.set("radius", 2.0f);
    ball.set("scale", Color(-4, 1, 0.25f));
    ball.startFrame();
    Mesh mesh;
    std::string error;
    ASSERT_TRUE(ball.plugin.buildMesh(mesh, error)) << error;
    for (std::size_t i = 0; i < mesh.positions.size(); ++i) {
        const Vector p = mesh.positions[i];
        EXPECT_NEAR(length(Vector(p.x / 4, p.y, p.z * 4)), 2.0f, 1e-5f);
        // The gradient of (x/4)^2 + y^2 + (4z)^2 is the true normal.
        const Vector gradient = normalizeGuarded({p.x / 16, p.y, p.z * 16});
        EXPECT_NEAR(dot(gradient, mesh.normals[i]), 1.0f, 1e-4f);
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto& t = mesh.triangles[i];
        EXPECT_GT(dot(areaVector(mesh, i), mesh.normals[t[0]]), 0.0f) << "turned or collapsed";
        const float u[] = {mesh.uvs[t[0]].u, mesh.uvs[t[1]].u, mesh.uvs[t[2]].u};
        EXPECT_LT(*std::max_element(u, u + 3) - *std::min_element(u, u + 3), 0.1f) << "seam";
    }
}

TEST(Geometry, IsScaledThenTurnedAboutXThenYThenZThenMoved) {
    Mesh mesh;
    mesh.positions = {{1, 0, 0}};
    Placement({2, 1, 1}, {90, 90, 90}, {1, 2, 3}).apply(mesh);
    EXPECT_LE(length(mesh.positions[0] - Vector(1, 2, 1)), 1e-6f);
}

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
        dir.write(c.name, c.content);
        ASSERT_TRUE(load(c.name)) << error;
        EXPECT_NEAR(length(areaVector(mesh, 0)), c.area, 1e-6);
        EXPECT_NEAR(dot(mesh.normals[0], normalizeGuarded(areaVector(mesh, 0))), 1.0f, 1e-5f);
    }
    ASSERT_TRUE(load("q.obj", false));
    EXPECT_THAT(mesh.materialIDs, testing::ElementsAre(0, 0, 1));
    EXPECT_EQ(mesh.uvs.size(), mesh.positions.size());
    EXPECT_TRUE(mesh.normals.empty());
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
        {"not finite", "m.obj", "v 0 0 0\nv 1 0 0\nv 0 nan 0\nf 1 2 3\n"},
        {"bytes missing", "m.ply", bytes.substr(0, bytes.size() - 1)},
        {"index below 0", "m.ply", ply("ascii", plyPoints + "3 0 1 -2\n")},
        {"huge count", "m.ply", ply("binary_big_endian", plyBytes().substr(0, 36) + "\xff")},
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
