#pragma once

#include <functional>
#include <map>
#include <utility>

#include "pelk/base/grow_table.h"
#include "pelk/base/hash_table.h"
#include "pelk/platform/module.h"
#include "pelk/support/base_allocator.h"
#include "pelk/support/plugin_manager.h"

namespace Tarnkit {

class DefaultPluginManager;

/// The library of descriptors that are compiled into the host.
class SystemLibDesc final : public PluginLibDesc {
public:
    explicit SystemLibDesc(DefaultPluginManager& owner) : manager(owner) {}

    const char* getLibraryName() override { return "SystemLib"; }
    const char* getLibraryDescription() override { return "System plugins"; }
    /// Unlike that of other libraries, the result leaves the descriptor out at which the callback
    /// stopped.
    int enumPluginDescs(EnumPluginDescCallback* callback) override;

    void add(PluginDesc* desc, PelkPluginHost* host);
    void remove(PluginDesc* desc, PelkPluginHost* host);
    void removeAll(PelkPluginHost* host);

private:
    void removeAt(int index, PelkPluginHost* host);

    GrowTable<PluginDesc*> descs{100};
    DefaultPluginManager& manager;
};

/// One library that the manager knows.
struct LoadedLibrary {
    char fileName[512];             ///< full path, terminated; empty for the system library
    PluginLibDesc* desc;            ///< null only if the library threw while it was taken in
    platform::ModuleHandle module;  ///< null for the system library
};

using PluginNameTable = HashTable<const char*, PluginDesc*>;

/// Learns of libraries that were found but not taken.
class LibraryRefusedCallback {
public:
    virtual ~LibraryRefusedCallback() = default;
    virtual void refused(const char* path, const char* reason) = 0;
};

/// The plug-in manager. `release` frees it.
class DefaultPluginManager final : public PluginManager {
public:
    DefaultPluginManager();
    ~DefaultPluginManager() override;

    // The manager itself comes from where its tables do.
    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* memory) { freeMemory(memory); }

    PluginLibDesc* loadLibrary(const char* mask, PelkPluginHost* host, MessageLog* log) override;
    bool unloadLibrary(PluginLibDesc* library, PelkPluginHost* host) override;
    bool unloadAllLibraries(PelkPluginHost* host) override;
    int registerPluginDesc(PluginDesc* desc, PelkPluginHost* host) override;
    int unregisterPluginDesc(PluginDesc* desc, PelkPluginHost* host) override;
    int unregisterAllPluginDescs(PelkPluginHost* host) override;
    int enumLibraries(EnumPluginLibCallback* callback) override;
    int enumPluginDescs(EnumPluginDescCallback* callback) override;
    PluginDesc* getPluginDesc(const char* pluginName) override;
    PluginDesc* getPluginDesc(u32 pluginID) override;
    using PluginManager::newPlugin;
    Plugin* newPlugin(u32 pluginID, PelkPluginHost* host, u64 instanceID) override;
    void deletePlugin(Plugin* plugin) override;
    void deleteAllPlugins() override;
    int enumPlugins(EnumPluginCallback* callback) override;
    Plugin* getPlugin(u64 instanceID) override;
    int saveState(OutputStream& stream) override;
    int loadState(InputStream& stream) override;
    void setPluginID(Plugin* plugin, u64 instanceID) override;
    bool getPluginFileName(Plugin* plugin, char* buffer, int size) override;
    void setNextPluginID(u64 id) override { nextPluginID = id; }
    void* getLibraryProc(const char* libraryFileName, const char* symbol) override;
    void release() override { delete this; }

    /// The full path of a loaded library; empty for the host's own, null if it isn't loaded.
    const char* getLibraryFileName(const PluginLibDesc* library) const;

    /// Loads the library of exactly this path, whatever its name looks like; null if it is refused.
    /// What the library throws is reported and goes no further.
    PluginLibDesc* loadLibraryFile(const char* path, PelkPluginHost* host, MessageLog* log);

    /// Has `callback` told of every library that is refused from now on, next to what the log
    /// gets; null ends it. The callback stays the caller's.
    void setRefusedCallback(LibraryRefusedCallback* callback) { refusedCallback = callback; }

private:
    friend class SystemLibDesc;  // enters and drops names
    class AttachDescCb;
    class DetachDescCb;
    using GetLibDesc = PluginLibDesc* (*)();
    using PluginMap =
        std::map<u64, Plugin*, std::less<>, BaseAllocator<std::pair<const u64, Plugin*>>>;

    PluginLibDesc* loadFile(const char* path, PelkPluginHost* host, MessageLog& log);
    PluginLibDesc* loadFittingFile(const char* path, PelkPluginHost* host, MessageLog& log);
    PluginLibDesc* addLibrary(const char* path, platform::ModuleHandle module, GetLibDesc getDesc);
    bool unloadAt(int index, PelkPluginHost* host);
    PluginLibDesc* refuse(const char* path, const char* reason);

    PluginDesc* findDuplicate(PluginDesc* desc);
    void searchLibrary(const LoadedLibrary& library, EnumPluginDescCallback& callback);
    void enterName(PluginDesc* desc) { descsByName.insert(desc->getName(), desc); }
    void dropName(PluginDesc* desc) { descsByName.remove(desc->getName()); }

    SystemLibDesc systemLib{*this};
    GrowTable<LoadedLibrary> libraries{100};  // the first one is systemLib
    PluginMap plugins;
    u64 nextPluginID = 0;  // the last one given out
    PluginNameTable descsByName;
    LibraryRefusedCallback* refusedCallback = nullptr;
};

/// A manager that knows no library but the host's own, still empty.
DefaultPluginManager* newDefaultPluginManager();

}  // namespace Tarnkit
