#pragma once

#include <string>

namespace Tarnkit {

/// What a setting that is a whole number may be, both ends included. Scene files and command lines
/// give the same settings, so both test against these and word their messages from them; only
/// docs/scene.schema.json repeats the numbers, and a test holds the two together.
struct IntLimits {
    int least, most;

    constexpr bool allow(long long value) const { return value >= least && value <= most; }
    /// As a message words it: "a whole number from 1 to 1000".
    std::string expected() const {
        return "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
    }
};

inline constexpr IntLimits kPictureSideLimits{1, 65536};  ///< pixels, of width and of height
inline constexpr IntLimits kSampleLimits{1, 1 << 24};     ///< per pixel
inline constexpr IntLimits kSeedLimits{0, 0x7fffffff};
inline constexpr IntLimits kDepthLimits{1, 1000};  ///< of SceneSettings::maxDepth

/// The most pixels of a picture. Two sides that are allowed by themselves can make 16 times that,
/// and at this size the floats of beauty and alpha alone fill 6 GB.
inline constexpr long long kMaxPicturePixels = 1 << 28;

constexpr bool hasTooManyPixels(int width, int height) {
    return static_cast<long long>(width) * height > kMaxPicturePixels;
}

}  // namespace Tarnkit
