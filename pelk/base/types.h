#pragma once

#include <cstdint>

namespace Tarnkit {

// Unsigned integers whose width is part of what is meant: hashes, ids of interfaces and plug-ins,
// pixels, sizes in bytes that may pass 4 GB. Counts and indices are `int` everywhere, so that a
// difference of two of them may be negative and a loop may run down to 0.

// No other aliases of plain types are made: what a name such as `real` stands for has to be looked
// up, and none of these has to.
//
// Unsigned arithmetic wraps round, which hashes and random numbers rely on.

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

}  // namespace Tarnkit
