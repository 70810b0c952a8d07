#include "pelk/platform/module.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "pelk/platform/file.h"
#include "pelk/platform/memory_shortage.h"
#include "pelk/platform/posix/module_file.h"

namespace Tarnkit::platform {

ModuleHandle loadModule(const char* path, ModuleError& error) {
    std::string file = nativePath(path);
    // Without a separator the loader would search the system's library directories.
    if (file.find('/') == std::string::npos)
        file.insert(0, "./");
    if (!isWholeModule(file, error.message)) {
        error.code = ENOEXEC;
        return nullptr;
    }
    errno = 0;
    if (const ModuleHandle module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
        return module;
    // The loader has words, but a number only if a system call failed on the way.
    error.code = errno != 0 ? errno : ENOEXEC;
    if (error.code == ENOMEM)
        noteMemoryShortage();
    const char* message = dlerror();
    error.message = message ? message : "unknown reason";
    return nullptr;
}

void* findSymbol(ModuleHandle module, const char* name) {
    void* symbol = dlsym(module, name);
    if (!symbol)
        return nullptr;
    // The look-up goes on through the libraries that the module needs; their names don't count.
    link_map* own = nullptr;
    Dl_info info;
    void* home = nullptr;
    if (dlinfo(module, RTLD_DI_LINKMAP, &own) != 0 ||
        dladdr1(symbol, &info, &home, RTLD_DL_LINKMAP) == 0)
        return nullptr;
    return home == own ? symbol : nullptr;
}

bool moduleOfAddress(const void* address, char* path, std::size_t size) {
    path[0] = '\0';
    Dl_info info;
    if (!address || dladdr(address, &info) == 0 || !info.dli_fname)
        return false;
    // The table of a program's parts lies behind the head of its file, where it is mapped.
    const auto head = reinterpret_cast<std::uintptr_t>(info.dli_fbase) + sizeof(ElfW(Ehdr));
    if (head == getauxval(AT_PHDR))
        return false;
    std::snprintf(path, size, "%s", info.dli_fname);
    return true;
}

bool moduleOfObject(const void* object, char* path, std::size_t size) {
    return moduleOfAddress(*static_cast<const void* const*>(object), path, size);
}

bool releaseModule(ModuleHandle module) {
    return !module || dlclose(module) == 0;
}

}  // namespace Tarnkit::platform
