#pragma once

#include <cstddef>
#include <cstdint>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// The version of the operating system, for log headers.
struct OsVersion {
    int major;
    int minor;
    char servicePack[128];  ///< terminated; empty if none is installed
};

/// The version as the system states it. False, with `version` untouched, if it has none of this
/// form, as on Linux.
PELK_API bool osVersion(OsVersion& version);

/// The path of the running program. False, with an empty text, if it is unknown or does not fit.
PELK_API bool executablePath(char* buffer, std::size_t size);

/// The name of this computer in its network. False, with an empty text, as above.
PELK_API bool computerName(char* buffer, std::size_t size);

/// The memory of machine and process. All in bytes, as of one moment.
struct MemoryStatus {
    std::uint64_t totalPhysical;
    std::uint64_t freePhysical;  ///< what can be had without pushing other programs out
    std::uint64_t totalVirtual;  ///< the address space of this process
    std::uint64_t freeVirtual;
};

/// False if the system does not tell.
PELK_API bool memoryStatus(MemoryStatus& status);

/// Bytes of this process that stand in physical memory; -1 if unknown.
PELK_API std::int64_t workingSet();

}  // namespace Tarnkit::platform
