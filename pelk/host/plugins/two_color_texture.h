#pragma once

#include "pelk/base/color.h"
#include "pelk/contract/shader_source.h"

namespace Tarnkit {

inline Color blend(Color a, Color b, float share) {
    return a * (1.0f - share) + b * share;
}

inline void describeBlend(ShaderSource& source, const char* word, Color a, Color b) {
    source.printf("%s %f %f %f %f %f %f", word, a.r, a.g, a.b, b.r, b.g, b.b);
}

}  // namespace Tarnkit
