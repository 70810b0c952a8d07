#include "pelk/support/machine_info.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "pelk/platform/system_info.h"
#include "pelk/support/bounded_format.h"

namespace Tarnkit {

namespace {

constexpr int kOSNameSize = 256;

/// Whole megabytes, rounded up to a multiple of a power of two and limited to an int.
int toMB(std::uint64_t bytes, std::uint64_t multiple) {
    const std::uint64_t rounded = ((bytes >> 20) + multiple - 1) & ~(multiple - 1);
    return static_cast<int>(std::min<std::uint64_t>(rounded, INT_MAX));
}

/// All zero if the system does not tell.
platform::MemoryStatus readMemoryStatus() {
    platform::MemoryStatus status = {};
    return platform::memoryStatus(status) ? status : platform::MemoryStatus{};
}

/// In ASCII alone. Not by the C library, whose answer depends on the locale.
char toLower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 'a' - 'A')
                                                : character;
}

struct CachedOSName {
    char text[kOSNameSize];
    CachedOSName() { getOSName(text); }
};

}  // namespace

void getOSName(char* buffer) {
    platform::OsVersion version;
    if (platform::osVersion(version))
        boundedFormat(buffer, kOSNameSize, "Microsoft(tm) Windows(tm), version %i.%i, %s",
                      version.major, version.minor, version.servicePack);
    else
        std::strcpy(buffer, "Generic Microsoft(tm) Windows(tm)");
}

const char* getCachedOSName() {
    static const CachedOSName name;
    return name.text;
}

void getModuleFilePath(char* buffer, int size) {
    if (size > 0)
        platform::executablePath(buffer, size);
}

bool getModuleDirectory(char* buffer, int size) {
    if (size < 1)
        return false;
    getModuleFilePath(buffer, size);
    for (std::size_t i = std::strlen(buffer); i-- > 0;) {
        if (buffer[i] == '/' || buffer[i] == '\\') {
            buffer[i + 1] = 0;
            return true;
        }
    }
    return false;
}

int getComputerName(char* buffer, int* size) {
    if (*size < 1 || !platform::computerName(buffer, *size)) {
        *size = 0;
        return -1;
    }
    const std::size_t length = std::strlen(buffer);
    std::transform(buffer, buffer + length, buffer, toLower);
    *size = static_cast<int>(length) + 1;
    return 0;
}

int getTotalPhysicalMemoryMB() {
    return toMB(readMemoryStatus().totalPhysical, 16);
}

int getTotalVirtualMemoryMB() {
    return toMB(readMemoryStatus().totalVirtual, 4);
}

int getFreeMemoryMB() {
    const platform::MemoryStatus status = readMemoryStatus();
    return toMB(std::min(status.freePhysical, status.freeVirtual), 16);
}

bool formatWorkingSet(char* buffer, int size) {
    if (size < 1)
        return false;
    buffer[0] = 0;
    const long long megabytes = getWorkingSetMB();
    return megabytes >= 0 && boundedFormat(buffer, size, "Working set: %lld MB", megabytes) >= 0;
}

std::int64_t getWorkingSetMB() {
    const std::int64_t bytes = platform::workingSet();
    return bytes < 0 ? -1 : bytes >> 20;
}

}  // namespace Tarnkit
