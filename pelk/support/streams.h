#pragma once

#include "pelk/base/types.h"

namespace Tarnkit {

/// Takes bytes one after the other.
class OutputStream {
public:
    virtual ~OutputStream() = default;
    /// Writes `size` bytes; `written` becomes the number that went out. Returns 1 if all did,
    /// else 0.
    virtual int write(const void* data, u32 size, u32& written) = 0;
};

/// Gives bytes one after the other.
class InputStream {
public:
    virtual ~InputStream() = default;
    /// Reads `size` bytes; `read` becomes the number that came, fewer at the end of the stream.
    /// Returns 1 if all came, else 0.
    virtual int read(void* data, u32 size, u32& read) = 0;
};

}  // namespace Tarnkit
