#pragma once

#include <string>

#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

bool checkSize(const char* name, float value, std::string& error);

bool checkSegments(int segments, std::string& error);

void addVertex(Mesh& mesh, Vector position, Vector normal, UV uv);

/// The two triangles of a quad whose corners run counter-clockwise.
void addQuad(Mesh& mesh, u32 a, u32 b, u32 c, u32 d);

/// A rectangle of the given half edges about `centre`; its front is where `u` x `v` points.
void addRectangle(Mesh& mesh, Vector centre, Vector u, Vector v, int part);

}  // namespace Tarnkit
