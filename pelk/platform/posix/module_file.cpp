#include "pelk/platform/posix/module_file.h"

#include <link.h>

#include <cstring>
#include <fstream>

namespace Tarnkit::platform {

namespace {

/// Reads `count` bytes from a place in the file; false if they aren't there.
bool readAt(std::ifstream& file, std::uint64_t place, void* data, std::size_t count) {
    return file.seekg(static_cast<std::streamoff>(place)) &&
           file.read(static_cast<char*>(data), static_cast<std::streamsize>(count));
}

bool isOurs(const ElfW(Ehdr) & head) {
    return std::memcmp(head.e_ident, ELFMAG, SELFMAG) == 0 &&
           head.e_ident[EI_CLASS] == (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32) &&
           head.e_phentsize == sizeof(ElfW(Phdr));
}

}  // namespace

bool isWholeModule(const std::string& file, std::string& reason) {
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::uint64_t>(stream.tellg());
    ElfW(Ehdr) head;
    if (!stream || !readAt(stream, 0, &head, sizeof head) || !isOurs(head))
        return true;
    for (unsigned i = 0; i < head.e_phnum; ++i) {
        ElfW(Phdr) part;
        const bool there = readAt(stream, head.e_phoff + i * sizeof part, &part, sizeof part);
        const bool whole =
            there && (part.p_type != PT_LOAD ||
                      (part.p_filesz <= size && part.p_offset <= size - part.p_filesz));
        if (whole)
            continue;
        reason = file + ": the file is cut short";
        return false;
    }
    return true;
}

}  // namespace Tarnkit::platform
