#include "pelk/host/plugins/mesh_loader.h"

#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "pelk/host/plugins/confinement.h"
#include "pelk/host/plugins/mesh_check.h"
#include "pelk/host/plugins/mesh_io.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"
#include "pelk/platform/memory_shortage.h"

namespace Tarnkit {

namespace {

/// Far above what meshes need; what a file takes in memory is a multiple.
constexpr std::uint64_t kMostMeshBytes = std::uint64_t{1} << 34;

/// The reader aborts the process on some of what is refused here, so it sees the file after this.
bool checkFile(const std::string& path, const std::string& ending, std::string& error) {
    platform::InputFile file(path);
    std::string text, reason;
    if (!mayRead(path, reason))
        error = "it can't be read: " + reason;
    else if (file.getSize() > kMostMeshBytes)
        error = "it has more than " + std::to_string(kMostMeshBytes) + " bytes";
    else if (file.readAll(text))
        return checkMeshText(text, ending, error);
    else
        error = "it can't be read: " + file.getReason();
    return false;
}

bool hasWholeFaces(const aiMesh& mesh) {
    return std::all_of(mesh.mFaces, mesh.mFaces + mesh.mNumFaces, [&](const aiFace& face) {
        return face.mNumIndices > 0 &&
               std::all_of(face.mIndices, face.mIndices + face.mNumIndices,
                           [&](unsigned index) { return index < mesh.mNumVertices; });
    });
}

/// Reads the file as it stands, then cuts it into triangles if its indices can be trusted.
const aiScene* import(Assimp::Importer& importer, const std::string& path, bool smooth,
                      std::string& error) {
    std::string refusal;  // of a file that the mesh names
    auto* const files = new MeshFiles(refusal);
    importer.SetIOHandler(files);  // which owns it until another is set, and gives it back for null
    const aiScene* scene = importer.ReadFile(path, 0);
    importer.SetIOHandler(nullptr);
    const std::unique_ptr<MeshFiles> givenBack(files);
    if (!scene || !refusal.empty()) {
        error = refusal.empty() ? importer.GetErrorString() : refusal;
        return nullptr;
    }
    for (unsigned i = 0; i < scene->mNumMeshes; ++i) {
        if (!hasWholeFaces(*scene->mMeshes[i])) {
            error = "a face names a vertex that isn't there, or none";
            return nullptr;
        }
    }
    // Points and lines would only be in the way.
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE,
                                aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    scene = importer.ApplyPostProcessing(
        aiProcess_Triangulate | aiProcess_SortByPType | aiProcess_PreTransformVertices |
        aiProcess_JoinIdenticalVertices | (smooth ? unsigned{aiProcess_GenSmoothNormals} : 0u));
    if (!scene)
        error = "the file has no triangles that can be used";
    return scene;
}

bool isFinite3(const aiVector3D& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// The coordinates of a vertex; zeros without a set (null) and for what is no number, so that no
/// texture is ever read at NaN.
UV uvAt(const aiVector3D* set, unsigned vertex) {
    return set && isFinite3(set[vertex]) ? UV{set[vertex].x, set[vertex].y} : UV();
}

/// Appends one part. `withUVs`: whether any part has texture coordinates; one without gets zeros.
/// Normals are there for every part if any is wanted, but a collapsed triangle has none.
bool appendPart(const aiMesh& part, int number, bool withNormals, bool withUVs, Mesh& mesh) {
    const u32 first = static_cast<u32>(mesh.positions.size());
    for (unsigned i = 0; i < part.mNumVertices; ++i) {
        const aiVector3D& p = part.mVertices[i];
        if (!isFinite3(p))
            return false;
        mesh.positions.push_back({p.x, p.y, p.z});
        if (withNormals) {
            const aiVector3D n = part.HasNormals() ? part.mNormals[i] : aiVector3D();
            mesh.normals.push_back(isFinite3(n) ? Vector{n.x, n.y, n.z} : Vector());
        }
        if (withUVs) {
            mesh.uvs.push_back(uvAt(part.mTextureCoords[0], i));
        }
    }
    for (std::size_t set = 0; set < mesh.furtherUVs.size(); ++set) {
        for (unsigned i = 0; i < part.mNumVertices; ++i)
            mesh.furtherUVs[set].push_back(uvAt(part.mTextureCoords[set + 1], i));
    }
    for (unsigned i = 0; i < part.mNumFaces; ++i) {
        const aiFace& face = part.mFaces[i];
        if (face.mNumIndices != 3)
            continue;
        mesh.triangles.push_back(
            {first + face.mIndices[0], first + face.mIndices[1], first + face.mIndices[2]});
        mesh.parts.push_back(number);
    }
    return true;
}

bool collect(const aiScene& scene, bool smooth, Mesh& mesh, std::string& error) {
    bool withUVs = false;
    unsigned uvSets = 1;
    std::vector<unsigned> materials;  // those in use, so that ids run from 0 without gaps
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        withUVs |= scene.mMeshes[i]->HasTextureCoords(0);
        uvSets = std::max(uvSets, scene.mMeshes[i]->GetNumUVChannels());
        materials.push_back(scene.mMeshes[i]->mMaterialIndex);
    }
    mesh.furtherUVs.resize(withUVs ? uvSets - 1 : 0);
    std::sort(materials.begin(), materials.end());
    materials.erase(std::unique(materials.begin(), materials.end()), materials.end());
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& part = *scene.mMeshes[i];
        const auto place =
            std::lower_bound(materials.begin(), materials.end(), part.mMaterialIndex);
        const int id = static_cast<int>(place - materials.begin());
        if (!appendPart(part, id, smooth, withUVs, mesh)) {
            error = "a vertex has a coordinate that is no finite number";
            return false;
        }
    }
    if (mesh.isEmpty())
        error = "the file has no triangles";
    return !mesh.isEmpty();
}

}  // namespace

std::string meshEnding(const std::string& file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
    return ending;
}

bool loadMesh(const std::string& file, bool smooth, Mesh& mesh, std::string& error) {
    const std::string path = platform::nativePath(file);
    const std::string ending = meshEnding(file);
    std::string reason;
    Assimp::Importer importer;
    const aiScene* scene = nullptr;
    if (ending != ".obj" && ending != ".ply" && ending != ".gltf" && ending != ".glb")
        reason = "a mesh file ends in .obj, .ply, .gltf or .glb";
    else if (checkFile(path, ending, reason))
        scene = import(importer, path, smooth, reason);
    mesh = Mesh();
    if (scene && collect(*scene, smooth, mesh, reason))
        return true;
    // The import library has other words for it, or none.
    error = "mesh \"" + file + "\": " + (platform::hadMemoryShortage() ? "out of memory" : reason);
    return false;
}

}  // namespace Tarnkit
