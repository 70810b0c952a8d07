#pragma once

#include <algorithm>
#include <cmath>

namespace Tarnkit {

/// A linear colour, or a per-channel weight.
struct Color {
    float r = 0.0f, g = 0.0f, b = 0.0f;

    constexpr Color() = default;
    constexpr explicit Color(float grey) : r(grey), g(grey), b(grey) {}
    constexpr Color(float red, float green, float blue) : r(red), g(green), b(blue) {}

    constexpr Color& operator+=(Color c) { return *this = {r + c.r, g + c.g, b + c.b}; }
    constexpr Color& operator-=(Color c) { return *this = {r - c.r, g - c.g, b - c.b}; }
    constexpr Color& operator*=(Color c) { return *this = {r * c.r, g * c.g, b * c.b}; }
    constexpr Color& operator*=(float s) { return *this = {r * s, g * s, b * s}; }

    constexpr bool operator==(const Color&) const = default;
};

constexpr Color operator+(Color a, Color b) {
    return a += b;
}
constexpr Color operator-(Color a, Color b) {
    return a -= b;
}
constexpr Color operator*(Color a, Color b) {
    return a *= b;
}
constexpr Color operator*(Color c, float s) {
    return c *= s;
}
constexpr Color operator*(float s, Color c) {
    return c *= s;
}

/// The mean of the channels; 0.33333334 is the nearest float to a third.
constexpr float mean(Color c) {
    return (c.r + c.g + c.b) * 0.33333334f;
}

/// What is left of white: max(0, 1 - c) per channel.
constexpr Color complement(Color c) {
    return {std::max(0.0f, 1.0f - c.r), std::max(0.0f, 1.0f - c.g), std::max(0.0f, 1.0f - c.b)};
}

/// Per channel the smaller value.
constexpr Color minimum(Color a, Color b) {
    return {std::min(a.r, b.r), std::min(a.g, b.g), std::min(a.b, b.b)};
}

inline bool isFinite(Color c) {
    return std::isfinite(c.r) && std::isfinite(c.g) && std::isfinite(c.b);
}

/// A colour with a coverage.
struct AColor {
    Color color;
    float alpha = 0.0f;

    constexpr bool operator==(const AColor&) const = default;
};

}  // namespace Tarnkit
