#pragma once

#include <array>
#include <vector>

#include "pelk/base/types.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

/// Two texture coordinates.
struct UV {
    float u = 0.0f, v = 0.0f;
};

/// Triangles in world space. Front faces run counter-clockwise.
struct Mesh {
    std::vector<Vector> positions;
    std::vector<Vector> normals;  ///< unit, one per vertex; empty for flat shading
    std::vector<UV> uvs;          ///< one per vertex; empty if there are none
    std::vector<std::vector<UV>>
        furtherUVs;  ///< more sets of them, only where there are first ones
    std::vector<std::array<u32, 3>> triangles;
    std::vector<int> materialIDs;  ///< one per triangle; empty stands for 0 everywhere
    std::vector<int> parts;  ///< number of the part of each triangle; empty stands for 0 everywhere

    bool isEmpty() const { return triangles.empty(); }
};

}  // namespace Tarnkit
