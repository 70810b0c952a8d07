#pragma once

#include <gmock/gmock.h>

#include <array>
#include <ostream>

#include "pelk/contract/material.h"

// How test failures show the contract's values.

namespace Tarnkit {

inline void PrintTo(const Color& c, std::ostream* out) {
    *out << "(" << c.r << " " << c.g << " " << c.b << ")";
}
inline void PrintTo(const Vector& v, std::ostream* out) {
    *out << "(" << v.x << " " << v.y << " " << v.z << ")";
}

}  // namespace Tarnkit

/// The four results of a hit.
struct Results {
    Color color, transparency, alpha, alphaTransparency;

    bool operator==(const Results&) const = default;
    friend void PrintTo(const Results& r, std::ostream* out) {
        *out << testing::PrintToString(
            std::array{r.color, r.transparency, r.alpha, r.alphaTransparency});
    }
};

inline Results resultsOf(const PelkContext& context) {
    return {context.resultColor, context.resultTransparency, context.resultAlpha,
            context.resultAlphaTransparency};
}

inline const Results kOpaqueBlack = {Color(0), Color(0), Color(1), Color(0)};
inline const Results kFullyTransparent = {Color(0), Color(1), Color(0), Color(1)};
inline const Results kNothing = {};

/// No farther than `tolerance` from the expected vector.
MATCHER_P2(VectorNear, expected, tolerance, "") {
    return length(arg - expected) <= tolerance;
}

/// The same for a colour.
MATCHER_P2(ColorNear, expected, tolerance, "") {
    const Color off = arg - expected;
    return length({off.r, off.g, off.b}) <= tolerance;
}
