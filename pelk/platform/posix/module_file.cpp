#include "pelk/platform/posix/module_file.h"

#include <link.h>

#include <cstring>

#include "pelk/platform/input_file.h"

namespace Tarnkit::platform {

namespace {

bool isOurs(const ElfW(Ehdr) & head) {
    return std::memcmp(head.e_ident, ELFMAG, SELFMAG) == 0 &&
           head.e_ident[EI_CLASS] == (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32) &&
           head.e_phentsize == sizeof(ElfW(Phdr));
}

}  // namespace

bool isWholeModule(const std::string& path, std::string& reason) {
    InputFile file(path);
    ElfW(Ehdr) head;
    if (!file.isOpen() && !file.isMissing()) {
        reason = path + ": " + file.getReason();
        return false;
    }
    if (!file.isOpen() || !file.read(0, &head, sizeof head) || !isOurs(head))
        return true;
    const std::uint64_t size = file.getSize();
    for (unsigned i = 0; i < head.e_phnum; ++i) {
        ElfW(Phdr) part;
        const bool there = file.read(head.e_phoff + i * sizeof part, &part, sizeof part);
        const bool whole =
            there && (part.p_type != PT_LOAD ||
                      (part.p_filesz <= size && part.p_offset <= size - part.p_filesz));
        if (whole)
            continue;
        reason = path + ": the file is cut short";
        return false;
    }
    return true;
}

}  // namespace Tarnkit::platform
