#include <cassert>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/base/error_chain.h"
#include "pelk/base/text_or.h"
#include "pelk/base/thrown_text.h"
#include "pelk/contract/plugin_call.h"
#include "pelk/platform/file.h"
#include "pelk/support/plugin_manager_default.h"
#include "pelk/support/silent_log.h"

namespace Tarnkit {

namespace {

constexpr std::size_t kPathSize = sizeof(LoadedLibrary::fileName);

/// Where the part behind the last separator begins.
std::size_t fileNameStart(std::string_view path) {
    return path.find_last_of("/\\") + 1;  // 0 without a separator
}

const char* printable(PluginDesc* desc) {
    return textOrEmpty(desc->getName());
}

/// What was thrown while a library was loaded, behind the operation that threw, if it was noted.
std::string thrownReason() {
    const PluginCallNote* const note = pluginCallNote();
    return (note && note->operation ? std::string(note->operation) + ": " : "") + thrownText();
}

/// Loads a module; the error has one record, with the system's code and words.
ErrorChain loadLib(const char* path, platform::ModuleHandle& module) {
    platform::ModuleError error;
    module = platform::loadModule(path, error);
    if (module)
        return {};
    return ErrorChain::makeError("loadLib", error.code, "LoadLibrary failed (%i): %s", error.code,
                                 error.message.c_str());
}

}  // namespace

/// Registers the descriptors of a library that has just been loaded, but for those whose id is
/// taken.
class DefaultPluginManager::AttachDescCb final : public EnumPluginDescCallback {
public:
    AttachDescCb(DefaultPluginManager& owner, MessageLog& report, PelkPluginHost* target)
        : manager(owner), log(report), host(target) {}

    int process(PluginDesc* desc) override {
        if (!desc)
            return 1;
        if (PluginDesc* other = manager.findDuplicate(desc)) {
            log.warning("Duplicate plugin IDs: %s and %s", printable(other), printable(desc));
            return 1;
        }
        log.debug("Found plugin \"%s\"", printable(desc));
        const ScopedCallNote note("registerPlugin", nullptr, printable(desc));
        desc->registerPlugin(host);
        manager.enterName(desc);
        return 1;
    }

private:
    DefaultPluginManager& manager;
    MessageLog& log;
    PelkPluginHost* host;
};

/// Unregisters the descriptors of a library that is about to be unloaded, those that were refused
/// for their id too, since no list says which these were.
class DefaultPluginManager::DetachDescCb final : public EnumPluginDescCallback {
public:
    DetachDescCb(PelkPluginHost* target, DefaultPluginManager& owner)
        : host(target), manager(owner) {}

    int process(PluginDesc* desc) override {
        if (!desc)
            return 1;
        manager.dropName(desc);
        const ScopedCallNote note("unregisterPlugin", nullptr, printable(desc));
        desc->unregisterPlugin(host);
        return 1;
    }

private:
    PelkPluginHost* host;
    DefaultPluginManager& manager;
};

PluginLibDesc* DefaultPluginManager::loadLibrary(const char* mask, PelkPluginHost* host,
                                                 MessageLog* log) {
    SilentLog silent;
    MessageLog& report = log ? *log : silent;
    if (!mask)
        return nullptr;
    const std::string fullMask = platform::fullPath(mask);
    if (fullMask.empty() || fullMask.size() >= kPathSize) {
        report.error("Plugin mask \"%s\" has no full path of 1 to %zu characters", mask,
                     kPathSize - 1);
        return nullptr;
    }
    report.debug("loadLibrary(%s)", mask);
    const std::string directory = fullMask.substr(0, fileNameStart(fullMask));
    if (directory.size() == fullMask.size()) {
        report.error("Plugin mask \"%s\" ends in a directory, a file name is expected", mask);
        return nullptr;
    }
    const std::vector<std::string> names = platform::listFiles(fullMask);
    if (names.empty())
        return nullptr;
    PluginLibDesc* last = nullptr;
    int loaded = 0;
    for (const std::string& name : names)
        if (PluginLibDesc* desc = loadFile((directory + name).c_str(), host, report)) {
            last = desc;
            ++loaded;
        }
    report.info("%d plugin(s) loaded successfully", loaded);
    report.finish();
    return last;
}

PluginLibDesc* DefaultPluginManager::loadLibraryFile(const char* path, PelkPluginHost* host,
                                                     MessageLog* log) {
    SilentLog silent;
    MessageLog& report = log ? *log : silent;
    try {
        return loadFile(path, host, report);
    } catch (...) {
        report.error("Error loading plugin library \"%s\": %s", path, thrownReason().c_str());
        forgetPluginCall();
        return nullptr;
    }
}

/// Loads one library. What is thrown on the way goes on to the caller.
PluginLibDesc* DefaultPluginManager::loadFile(const char* path, PelkPluginHost* host,
                                              MessageLog& log) {
    try {
        if (std::strlen(path) < kPathSize)
            return loadFittingFile(path, host, log);
        log.error("Error loading plugin library \"%s\": the path is longer than %zu characters",
                  path, kPathSize - 1);
        return refuse(path, "the path is too long");
    } catch (...) {
        refuse(path, thrownReason().c_str());
        throw;
    }
}

PluginLibDesc* DefaultPluginManager::loadFittingFile(const char* path, PelkPluginHost* host,
                                                     MessageLog& log) {
    log.debug("Loading plugin \"%s\"", path);
    const ScopedCallNote loading("loading", path);  // its static objects are made
    platform::ModuleHandle module = nullptr;
    const ErrorChain error = loadLib(path, module);
    if (error.isError()) {
        log.error("Error loading plugin library \"%s\": %s", path, error.getRecordText(0));
        return refuse(path, error.getRecordText(0));
    }
    const auto getDesc = reinterpret_cast<GetLibDesc>(platform::findSymbol(module, "getLibDesc"));
    PluginLibDesc* desc = getDesc ? addLibrary(path, module, getDesc) : nullptr;
    if (!desc) {
        log.error("Error getting library description \"%s\"", path);
        return refuse(path, getDesc ? "getLibDesc gives no description"
                                    : "no function getLibDesc of its own");
    }
    const ScopedCallNote listing("enumPluginDescs", path);
    AttachDescCb attach(*this, log, host);
    desc->enumPluginDescs(&attach);
    log.debug("Plugin library \"%s\" loaded", path);
    return desc;
}

/// Enters a module in the table and asks it for its description. Without one, releases the
/// module, takes it out again and returns null.
PluginLibDesc* DefaultPluginManager::addLibrary(const char* path, platform::ModuleHandle module,
                                                GetLibDesc getDesc) {
    LoadedLibrary library{};
    std::memcpy(library.fileName, path, std::strlen(path));
    library.module = module;
    const int index = libraries.size();
    libraries.append(library);
    const ScopedCallNote note("getLibDesc", path);
    PluginLibDesc* desc = getDesc();
    libraries[index].desc = desc;
    if (!desc) {
        libraries.removeBySwap(index);
        platform::releaseModule(module);
    }
    return desc;
}

/// Tells the host's callback, if there is one. Always returns null, for the caller to return.
PluginLibDesc* DefaultPluginManager::refuse(const char* path, const char* reason) {
    if (refusedCallback)
        refusedCallback->refused(path, reason);
    return nullptr;
}

bool DefaultPluginManager::unloadLibrary(PluginLibDesc* library, PelkPluginHost* host) {
    for (int i = libraries.size() - 1; i >= 1; --i)
        if (library && libraries[i].desc == library)
            return unloadAt(i, host);
    return false;
}

bool DefaultPluginManager::unloadAllLibraries(PelkPluginHost* host) {
    bool all = true;
    for (int i = libraries.size() - 1; i >= 1; --i)
        all &= unloadAt(i, host);
    return all;
}

/// False, and the record stays, if it has no description, if not all of its descriptors could be
/// taken out, or if the system keeps the module.
bool DefaultPluginManager::unloadAt(int index, PelkPluginHost* host) {
    assert(index > 0);  // record 0 is the host's own library
    PluginLibDesc* desc = libraries[index].desc;
    if (!desc)
        return false;
    const ScopedCallNote note("unloading", libraries[index].fileName);
    DetachDescCb detach(host, *this);
    try {
        desc->enumPluginDescs(&detach);
    } catch (...) {
        forgetPluginCall();
        return false;
    }
    if (!platform::releaseModule(libraries[index].module))
        return false;
    libraries.removeBySwap(index);
    return true;
}

const char* DefaultPluginManager::getLibraryFileName(const PluginLibDesc* library) const {
    for (const LoadedLibrary& known : libraries)
        if (library && known.desc == library)
            return known.fileName;
    return nullptr;
}

void* DefaultPluginManager::getLibraryProc(const char* libraryFileName, const char* symbol) {
    if (!libraryFileName || !symbol)
        return nullptr;
    for (const LoadedLibrary& library : libraries) {
        const char* name = library.fileName + fileNameStart(library.fileName);
        if (std::strncmp(name, libraryFileName, kPathSize) == 0)
            return library.module ? platform::findSymbol(library.module, symbol) : nullptr;
    }
    return nullptr;
}

}  // namespace Tarnkit
