#pragma once

#include <cstddef>

#include "pelk/base/api.h"

namespace Tarnkit {

class PelkRenderer;

/// One run of describing a material tree. Passed through unchanged from the top to the leaves.
struct OCLData {
    PelkRenderer* renderer = nullptr;
};

/// Text that grows at its end. Numbers are written as in the "C" locale whatever locale is set.
class PELK_API ShaderSource {
public:
    ShaderSource() = default;
    ~ShaderSource();
    ShaderSource(const ShaderSource&) = delete;
    ShaderSource& operator=(const ShaderSource&) = delete;

    void append(const char* text);
    void append(const ShaderSource& other);
    /// The conversions of printf but for `*` and %n. A null text for %s is written as empty.
    void printf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// The text so far, empty at first.
    const char* c_str() const { return text ? text : ""; }
    int length() const { return static_cast<int>(used); }

private:
    void append(const char* from, size_t size);

    char* text = nullptr;
    size_t used = 0, capacity = 0;
};

}  // namespace Tarnkit
