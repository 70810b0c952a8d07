#pragma once

#include <string>
#include <vector>

#include "pelk/base/types.h"

namespace Tarnkit {

/// The frames of an animation that --frames asks for: `first`, and every `step` further on up to
/// `last`, in this order.
struct FrameRange {
    int first = 0, last = 0;
    int step = 1;

    bool operator==(const FrameRange&) const = default;
};

/// The most frames of a range. Beyond that a slip of the hand is likelier than a film.
inline constexpr int kMaxFrames = 1000000;

/// Reads "A-B", "A" or "A-BxSTEP", as in "1-10", "7" and "0-100x5"; frames may be negative, and
/// "-5--1" is a range too. False for anything else, for a range that runs down, a step below 1 and
/// more than kMaxFrames frames; `range` is untouched then.
bool parseFrameRange(const std::string& text, FrameRange& range);

/// All frames of a range, at least one.
std::vector<int> framesOf(const FrameRange& range);

/// The name of one frame's picture. `pattern` has a placeholder of any of the forms of
/// frame_numbers.h; a run of `#` is one of them, with as many digits as it is long, or four if it
/// is a single one. A name without a placeholder gets the number, in four digits, in front of its
/// extension.
std::string frameName(const std::string& pattern, int frame);

/// RenderOptions::noiseSeed of a frame under a `--seed`, so that noise does not stand still over the
/// picture like dirt on the lens.
u32 frameNoise(u32 seed, int frame);

/// Two frames that would be written to one file, as a message about it; empty if there are none.
std::string equalFrameNames(const std::vector<std::string>& patterns, const FrameRange& range);

}  // namespace Tarnkit
