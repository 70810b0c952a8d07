#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// Processors that one mask of 64 bits counts, and how many such groups a set has room for.
inline constexpr int kProcessorsPerGroup = 64;
inline constexpr int kMaxProcessorGroups = 16;

/// A set of processors. Word g is the group g, that is the processors from 64 g on, lowest bit
/// first; machines of up to 64 processors have the group 0 alone.
struct ProcessorSet {
    std::array<std::uint64_t, kMaxProcessorGroups> groups{};

    /// Processors in the set.
    int count() const {
        int sum = 0;
        for (const std::uint64_t mask : groups)
            sum += std::popcount(mask);
        return sum;
    }

    bool operator==(const ProcessorSet&) const = default;
};

/// Reads a list of processor numbers and ranges such as "0-3,8,10-11\n". Numbers for which a set
/// has no room are passed over. False if the text is no such list; the empty list is one.
PELK_API bool parseProcessorList(std::string_view text, ProcessorSet& set);

/// The processors that this process may use, whatever the calling thread is bound to. False if the
/// system does not tell.
PELK_API bool processAffinity(ProcessorSet& set);

}  // namespace Tarnkit::platform
