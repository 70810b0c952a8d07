#pragma once

#include <string>

#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

/// Reads the triangles of a mesh file (OBJ, PLY, glTF as text or binary), polygons cut into
/// triangles and the nodes of a hierarchy put in their places. The number of the material in the
/// file becomes that of the part. With `smooth`, a part without normals gets smooth ones. Returns
/// false for a file that is missing, broken or cut short, with a text that names it.
bool loadMesh(const std::string& file, bool smooth, Mesh& mesh, std::string& error);

/// The ending of a file's name in lower case, ".obj" or another one: what decides on its format.
std::string meshEnding(const std::string& file);

}  // namespace Tarnkit
