#include "pelk/host/cli/frame_range.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>

#include "pelk/host/trace/sampling.h"
#include "pelk/platform/file.h"
#include "pelk/support/frame_numbers.h"

namespace Tarnkit {

namespace {

constexpr int kDigits = 4;

/// Reads a number at `at` and moves on behind it.
bool readNumber(const char*& at, const char* end, int& number) {
    const auto [next, fault] = std::from_chars(at, end, number);
    at = next;
    return fault == std::errc();
}

/// Makes one `#` of each run of them, and tells the length of the longest.
int joinMarks(std::string& name) {
    int longest = 0, run = 0;
    std::erase_if(name, [&](char c) {
        run = c == '#' ? run + 1 : 0;
        longest = std::max(longest, run);
        return run > 1;
    });
    return longest;
}

}  // namespace

bool parseFrameRange(const std::string& text, FrameRange& range) {
    const char* at = text.data();
    const char* const end = at + text.size();
    FrameRange read;
    if (!readNumber(at, end, read.first))
        return false;
    read.last = read.first;
    if (at != end && (*at++ != '-' || !readNumber(at, end, read.last)))
        return false;
    if (at != end && (*at++ != 'x' || !readNumber(at, end, read.step)))
        return false;
    if (at != end || read.step < 1 || read.last < read.first ||
        (static_cast<long long>(read.last) - read.first) / read.step >= kMaxFrames)
        return false;
    range = read;
    return true;
}

std::vector<int> framesOf(const FrameRange& range) {
    std::vector<int> frames;
    for (long long frame = range.first; frame <= range.last; frame += range.step)
        frames.push_back(static_cast<int>(frame));
    return frames;
}

std::string frameName(const std::string& pattern, int frame) {
    const std::string expanded = expandFrameNumber(pattern.c_str(), frame).c_str();
    if (expanded != pattern)
        return expanded;
    std::string name = pattern;
    const int marks = joinMarks(name);
    const int digits = marks > 1 ? marks : kDigits;
    // A mark is replaced by the digits asked for, or by a number that has more.
    std::string out((name.size() + 1) * (static_cast<std::size_t>(digits) + 12), '\0');
    insertFrameNumber(name.c_str(), digits, frame, out.data(), static_cast<int>(out.size()), true);
    return out.c_str();
}

u32 frameNoise(u32 seed, int frame) {
    return hash32(seed + hash32(static_cast<u32>(frame) + 0x2545f491u));
}

std::string equalFrameNames(const std::vector<std::string>& patterns, const FrameRange& range) {
    std::unordered_map<std::string, int> frameOf;
    for (const int frame : framesOf(range)) {
        for (const std::string& pattern : patterns) {
            const std::string name = frameName(pattern, frame);
            const auto [other, isNew] = frameOf.try_emplace(platform::fullPath(name), frame);
            if (!isNew && other->second != frame)
                return "frames " + std::to_string(other->second) + " and " + std::to_string(frame) +
                       " would both be written to \"" + name + "\"";
        }
    }
    return "";
}

}  // namespace Tarnkit
