#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// The variables of this process. Some systems keep two sets: what the system passed on, and a copy
/// of the C runtime, in which getenv looks; then something set in one is missing in the other. A
/// test may put operations of its own in place of the system's. Not while another thread changes a
/// variable: the C library has no lock here.
struct Environment {
    /// What the system holds, each entry as "NAME=VALUE". Copies, so they outlast any change.
    std::vector<std::string> (*entries)();
    /// The runtime's value of a name: its length without the end, -1 if there is none. The value
    /// stands in `buffer`, terminated, if it fits into `size` bytes.
    long (*read)(const char* name, char* buffer, std::size_t size);
    /// Sets the runtime's value.
    void (*write)(const char* name, const char* value);
};

/// The operations in use.
PELK_API const Environment& environment();

/// Replaces the operations, which must stay valid; null puts the system's own back. On POSIX those
/// work on one set of variables, the process's and the runtime's at once.
PELK_API void setEnvironment(const Environment* environment);

}  // namespace Tarnkit::platform
