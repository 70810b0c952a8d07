#include "pelk/platform/system_info.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Tarnkit::platform {

namespace {

/// User space of a 64-bit process, where no limit is set.
constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 47;

std::uint64_t pageSize() {
    return sysconf(_SC_PAGESIZE);
}

/// The process's address space in use and its resident part, in pages.
bool readProcessPages(unsigned long long& used, unsigned long long& resident) {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (!file)
        return false;
    const int read = std::fscanf(file, "%llu %llu", &used, &resident);
    std::fclose(file);
    return read == 2;
}

/// Bytes that the system could give out at once, caches included.
bool readAvailable(std::uint64_t& bytes) {
    std::FILE* file = std::fopen("/proc/meminfo", "r");
    if (!file)
        return false;
    unsigned long long kilobytes = 0;
    char line[256];
    bool found = false;
    while (!found && std::fgets(line, sizeof line, file))
        found = std::sscanf(line, "MemAvailable: %llu kB", &kilobytes) == 1;
    std::fclose(file);
    bytes = kilobytes * 1024;
    return found;
}

std::uint64_t addressSpace() {
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return kAddressSpace;
    return std::min<std::uint64_t>(limit.rlim_cur, kAddressSpace);
}

}  // namespace

bool osVersion(OsVersion&) {
    return false;
}

bool executablePath(char* buffer, std::size_t size) {
    if (size == 0)
        return false;
    const ssize_t length = readlink("/proc/self/exe", buffer, size);
    const bool fits = length >= 0 && static_cast<std::size_t>(length) < size;
    buffer[fits ? length : 0] = 0;
    return fits;
}

bool computerName(char* buffer, std::size_t size) {
    if (size == 0)
        return false;
    buffer[size - 1] = 0;
    // A name that was cut may lack its end.
    if (gethostname(buffer, size) == 0 && std::memchr(buffer, 0, size))
        return true;
    buffer[0] = 0;
    return false;
}

bool memoryStatus(MemoryStatus& status) {
    unsigned long long used = 0, resident = 0;
    const long pages = sysconf(_SC_PHYS_PAGES);
    if (pages < 0 || !readAvailable(status.freePhysical) || !readProcessPages(used, resident))
        return false;
    status.totalPhysical = pages * pageSize();
    status.totalVirtual = addressSpace();
    status.freeVirtual =
        status.totalVirtual - std::min<std::uint64_t>(status.totalVirtual, used * pageSize());
    return true;
}

std::int64_t workingSet() {
    unsigned long long used = 0, resident = 0;
    return readProcessPages(used, resident) ? static_cast<std::int64_t>(resident * pageSize()) : -1;
}

}  // namespace Tarnkit::platform
