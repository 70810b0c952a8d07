#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "pelk/base/char_string.h"

/// What the fuzzer calls; each target defines it, and replay.cpp calls it for files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Tarnkit {

/// Ends the process where a property does not hold: a finding.
inline void require(bool holds, const char* property) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}

inline std::string textOf(const CharString& text) {
    return {text.c_str() ? text.c_str() : "", static_cast<std::size_t>(text.length())};
}

/// The bytes of an input, taken from the front as numbers and texts; zeros when they run out.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : next(data), end(data + size) {}

    template <class Number>
    Number number() {
        Number result{};
        const std::size_t count = std::min(sizeof result, left());
        if (count > 0)
            std::memcpy(&result, next, count);
        next += count;
        return result;
    }
    /// From `low` to `high`, both inside, by one byte.
    int between(int low, int high) { return low + number<std::uint8_t>() % (high - low + 1); }
    /// Up to the next line end or zero, which is taken too.
    std::string line() {
        const auto* stop = std::find_if(next, end, [](auto c) { return c == '\n' || c == 0; });
        std::string text(next, stop);
        next = stop == end ? end : stop + 1;
        return text;
    }
    /// All that is left.
    std::vector<std::uint8_t> rest() { return {std::exchange(next, end), end}; }
    std::size_t left() const { return static_cast<std::size_t>(end - next); }

private:
    const std::uint8_t *next, *end;
};

/// A file in memory with a name, for code that takes names.
class MemoryFile {
public:
    MemoryFile(const void* data, std::size_t size) : descriptor(memfd_create("fuzz", MFD_CLOEXEC)) {
        require(descriptor >= 0 && write(descriptor, data, size) == static_cast<ssize_t>(size),
                "a file in memory can be made");
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

/// A buffer of just `size` bytes on the heap, where a sanitizer sees one byte beyond.
class ExactBuffer {
public:
    explicit ExactBuffer(int size) : bytes(new char[static_cast<std::size_t>(size)]) {}
    /// Holds a terminated text, cut to the size.
    ExactBuffer(int size, const std::string& text) : ExactBuffer(size) {
        const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(bytes, text.data(), length);
        bytes[length] = 0;
    }
    ~ExactBuffer() { delete[] bytes; }
    ExactBuffer(const ExactBuffer&) = delete;
    ExactBuffer& operator=(const ExactBuffer&) = delete;

    char* get() { return bytes; }

private:
    char* bytes;
};

}  // namespace Tarnkit
