#pragma once

#include "pelk/base/types.h"

namespace Tarnkit {

// What the state of a plug-in manager is written to and read from: a file, a pipe, a block of
// memory. Hosts implement and own them; they are kept by nobody beyond a call. Nobody here buffers
// or locks, so one stream belongs to one thread at a time.

/// Takes bytes one after the other.
class OutputStream {
public:
    virtual ~OutputStream() = default;
    /// Writes `size` bytes from `data`; `written` becomes the number that went out, which is fewer
    /// on a full disk. Returns 1 if all did, else 0.
    virtual int write(const void* data, u32 size, u32& written) = 0;
};

/// Gives bytes one after the other.
class InputStream {
public:
    virtual ~InputStream() = default;
    /// Reads `size` bytes into `data`; `read` becomes the number that came, fewer at the end of the
    /// stream. Returns 1 if all came, else 0. The plug-in manager tests both answers, as a careless
    /// implementation tells the end of a file by one of them alone.
    virtual int read(void* data, u32 size, u32& read) = 0;
};

}  // namespace Tarnkit
