#pragma once

#include "fuzz/fuzz_input.h"
#include "pelk/host/picture/content_hash.h"
#include "pelk/host/picture/file_header.h"

namespace Tarnkit {

/// A file of the program as an attacker writes it: its first byte is taken off, and if that was
/// odd, size and check sums are made right, so that what lies behind them is reached.
inline std::vector<std::uint8_t> sealedFile(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const bool seal = input.number<std::uint8_t>() & 1;
    std::vector<std::uint8_t> bytes = input.rest();
    std::uint32_t header = 0;
    if (!seal || bytes.size() < 100)
        return bytes;
    std::memcpy(&header, &bytes[12], sizeof header);
    if (header < 100 || header > bytes.size())
        return bytes;
    const auto checksum = [](const std::uint8_t* from, std::size_t count) {
        ContentHash hash;
        hash.add(from, count);
        return hash.checksum();
    };
    const std::uint64_t payload = bytes.size() - header;
    const std::uint64_t payloadSum = checksum(bytes.data() + header, payload);
    std::memcpy(&bytes[24], &payload, sizeof payload);
    std::memcpy(&bytes[32], &payloadSum, sizeof payloadSum);
    const std::uint64_t headerSum = checksum(bytes.data(), header - 8);
    std::memcpy(&bytes[header - 8], &headerSum, sizeof headerSum);
    return bytes;
}

}  // namespace Tarnkit
