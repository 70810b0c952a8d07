#pragma once

#include "pelk/base/color.h"
#include "pelk/contract/shader_source.h"

namespace Tarnkit {

// What textures that interpolate between two colours share.

/// Linear interpolation: `a` at a share of 0, `b` at 1.
inline Color blend(Color a, Color b, float share) {
    return a * (1.0f - share) + b * share;
}

/// Writes the kind of the texture and its two colours for a descriptor; the line stays open.
inline void describeBlend(ShaderSource& source, const char* word, Color a, Color b) {
    source.printf("%s %f %f %f %f %f %f", word, a.r, a.g, a.b, b.r, b.g, b.b);
}

}  // namespace Tarnkit
