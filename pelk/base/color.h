#pragma once

#include <algorithm>
#include <cmath>

namespace Tarnkit {

// Colours as shading code computes with them. Plain values: any thread, no allocation, no failure.
// Components are neither clamped nor tested; a NaN or an infinity passes through to the result of
// the material, where it is repaired and told once.

/// An RGB triple in the linear working space of the host. It stands for radiance, at least 0 and
/// without an upper bound; for a reflectance or transmittance, 0 to 1 where energy is kept; or for
/// the throughput of a path, by which a radiance is multiplied per channel. Values coded for a
/// screen (sRGB) never stand here: readers of images decode them and writers encode them.
struct Color {
    // Red, green, blue. By default black: no light, and as a transmittance or weight nothing
    // passes. Three floats without padding, so an array of colours is an array of floats.
    float r = 0.0f, g = 0.0f, b = 0.0f;

    constexpr Color() = default;
    /// The same value in each channel. Explicit, so that no number becomes a colour by mistake.
    constexpr explicit Color(float grey) : r(grey), g(grey), b(grey) {}
    constexpr Color(float red, float green, float blue) : r(red), g(green), b(blue) {}

    // Per channel, with no clamping. A product of two colours is light through a filter.
    constexpr Color& operator+=(Color c) { return *this = {r + c.r, g + c.g, b + c.b}; }
    constexpr Color& operator-=(Color c) { return *this = {r - c.r, g - c.g, b - c.b}; }
    constexpr Color& operator*=(Color c) { return *this = {r * c.r, g * c.g, b * c.b}; }
    // The number scales all channels: a share of light, or a cosine.
    constexpr Color& operator*=(float s) { return *this = {r * s, g * s, b * s}; }

    /// Exact, per channel; a colour with a NaN is unequal to itself.
    constexpr bool operator==(const Color&) const = default;
};

// The same as values. Adding is light of two sources, multiplying light through a filter. There is
// no division: 0 / 0 in a channel would be a NaN in the picture, so whoever divides must look at
// each channel and say what a 0 there means.

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

/// The plain mean of the channels, for decisions on a weight (is this ray worth tracing) and for
/// turning a colour into a number parameter. Not a luminance: that weights the channels by how
/// bright they look. Multiplied by 0.33333334, the nearest float to a third, not divided by 3: the
/// two round apart.
constexpr float mean(Color c) {
    return (c.r + c.g + c.b) * 0.33333334f;
}

/// What is left of white: max(0, 1 - c) per channel. Turns transparency into alpha, and a coat's
/// reflectance into what the layer below it still gets. Never below 0, as a colour may be above 1
/// and the layer below would then take light away. A NaN in a channel gives 0 there.
constexpr Color complement(Color c) {
    return {std::max(0.0f, 1.0f - c.r), std::max(0.0f, 1.0f - c.g), std::max(0.0f, 1.0f - c.b)};
}

/// Per channel the smaller value. Used to cap what one layer passes on to the next at what it got,
/// as no layer may make light.
constexpr Color minimum(Color a, Color b) {
    return {std::min(a.r, b.r), std::min(a.g, b.g), std::min(a.b, b.b)};
}

/// Whether no channel is NaN or infinite; negative and very large values are finite. A single NaN
/// that reached a pixel would stay in it however many samples follow.
inline bool isFinite(Color c) {
    return std::isfinite(c.r) && std::isfinite(c.g) && std::isfinite(c.b);
}

/// A colour with its coverage, as textures, image files and render channels hold it. Whether the
/// colour is premultiplied by the alpha is said by whoever gives one.
struct AColor {
    Color color;         ///< linear
    float alpha = 0.0f;  ///< 0 is fully see-through, 1 opaque

    /// Exact, as for Color.
    constexpr bool operator==(const AColor&) const = default;
};

}  // namespace Tarnkit
