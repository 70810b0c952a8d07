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

/// A triangle mesh. Seen from the front, the vertices run counter-clockwise.
struct Mesh {
    std::vector<Vector> positions;
    std::vector<Vector> normals;  ///< unit, one per vertex; empty for flat shading
    std::vector<UV> uvs;          ///< one per vertex; empty if there are none
    /// Sets 1, 2, ... of texture coordinates, each one per vertex; none without set 0, `uvs`.
    std::vector<std::vector<UV>> furtherUVs;
    std::vector<std::array<u32, 3>> triangles;
    std::vector<int> parts;  ///< number of the part of each triangle; empty stands for 0 everywhere

    bool isEmpty() const { return triangles.empty(); }
};

}  // namespace Tarnkit
