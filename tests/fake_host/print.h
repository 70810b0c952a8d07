#pragma once

#include <gmock/gmock.h>

#include <cmath>
#include <ostream>

#include "frame/material.h"

// How test failures show the contract's values.

namespace Tarnkit {

inline void PrintTo(const Color& c, std::ostream* out) {
    *out << "(" << c.r << " " << c.g << " " << c.b << ")";
}
inline void PrintTo(const Vector& v, std::ostream* out) {
    *out << "(" << v.x << " " << v.y << " " << v.z << ")";
}
inline void PrintTo(const Point& p, std::ostream* out) {
    *out << "(" << p.x << " " << p.y << " " << p.z << ")";
}

}  // namespace Tarnkit

/// The four results of a hit.
struct Results {
    Color color, transparency, alpha, alphaTransparency;

    bool operator==(const Results&) const = default;
    friend void PrintTo(const Results& results, std::ostream* out) {
        PrintTo(results.color, out);
        PrintTo(results.transparency, out);
        PrintTo(results.alpha, out);
        PrintTo(results.alphaTransparency, out);
    }
};

inline Results resultsOf(const PelkContext& context) {
    return {context.resultColor, context.resultTransparency, context.resultAlpha,
            context.resultAlphaTransparency};
}

inline const Results kOpaqueBlack = {Color(0), Color(0), Color(1), Color(0)};
inline const Results kFullyTransparent = {Color(0), Color(1), Color(0), Color(1)};
inline const Results kNothing = {};

/// Each channel within `tolerance` of the expected one.
MATCHER_P2(ColorNear, expected, tolerance, "") {
    return std::fabs(arg.r - expected.r) <= tolerance &&
           std::fabs(arg.g - expected.g) <= tolerance && std::fabs(arg.b - expected.b) <= tolerance;
}

/// Each component within `tolerance` of the expected one.
MATCHER_P2(VectorNear, expected, tolerance, "") {
    return std::fabs(arg.x - expected.x) <= tolerance &&
           std::fabs(arg.y - expected.y) <= tolerance && std::fabs(arg.z - expected.z) <= tolerance;
}
