#pragma once

#include <string>
#include <vector>

namespace Tarnkit {

/// The files that a mesh file reads further, by the names that they are opened with: material
/// libraries of an OBJ, whose order decides on the ids of its parts, and buffers of a glTF. Names
/// of files that are not there are among them. None for other files and for one that can't be read.
std::vector<std::string> filesBehindMesh(const std::string& file);

}  // namespace Tarnkit
