#pragma once

#include <string>

#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

// What the shapes share: checks of their parameters, which return false with a text that names the
// parameter, and the appending of vertices and triangles.

/// Whether a size is above 0 and finite.
bool checkSize(const char* name, float value, std::string& error);

/// Whether a tessellation has 3 to 4096 segments.
bool checkSegments(int segments, std::string& error);

/// Appends a vertex with its normal, which is unit, and texture coordinates.
void addVertex(Mesh& mesh, Vector position, Vector normal, UV uv);

/// The two triangles of a quad whose corners run counter-clockwise.
void addQuad(Mesh& mesh, u32 a, u32 b, u32 c, u32 d);

/// Appends a rectangle about `centre` with half edges `u` and `v`, as one part; its front is where
/// `u` x `v` points.
void addRectangle(Mesh& mesh, Vector centre, Vector u, Vector v, int part);

}  // namespace Tarnkit
