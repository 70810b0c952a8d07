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

/// The library of descriptors that are compiled into the host. It has no file and is never
/// unloaded; through it all walks over descriptors treat the host's own like any others. Part of
/// its manager, on whose thread it is used.
class SystemLibDesc final : public PluginLibDesc {
public:
    explicit SystemLibDesc(DefaultPluginManager& owner) : manager(owner) {}

    const char* getLibraryName() override { return "SystemLib"; }
    const char* getLibraryDescription() override { return "System plugins"; }
    /// Unlike that of other libraries, the result leaves the descriptor out at which the callback
    /// stopped.
    int enumPluginDescs(EnumPluginDescCallback* callback) override;

    /// Enters a descriptor, behind taking it out if it stands here already. The name is known
    /// before the host learns of the descriptor, the other way round than for a loaded library.
    void add(PluginDesc* desc, PelkPluginHost* host);
    /// Does nothing if the descriptor isn't here. The last descriptor takes the freed place, so the
    /// order of the others may change.
    void remove(PluginDesc* desc, PelkPluginHost* host);
    /// Takes all out, the last one first, and frees the table.
    void removeAll(PelkPluginHost* host);

private:
    void removeAt(int index, PelkPluginHost* host);

    GrowTable<PluginDesc*> descs{100};
    DefaultPluginManager& manager;
};

/// One library that the manager knows. Plain data, as the table moves its records bytewise, and
/// one that is unloaded leaves its place to the last.
struct LoadedLibrary {
    char fileName[512];             ///< full path, terminated; empty for the system library
    PluginLibDesc* desc;            ///< null only if the library threw while it was taken in
    platform::ModuleHandle module;  ///< null for the system library
};

/// Descriptors by name. The keys are the texts that getName returned, which are not copied: they
/// are static texts of the library and live as long as its descriptors.
using PluginNameTable = HashTable<const char*, PluginDesc*>;

/// Learns of libraries that were found but not taken, for hosts that list them to their user: a log
/// has the words, but not which file they are about. Owned by the host, called by the loading
/// operations on their thread.
class LibraryRefusedCallback {
public:
    virtual ~LibraryRefusedCallback() = default;
    /// Both texts are valid during the call alone. `reason` is a clause without a full stop, such
    /// as "no function getLibDesc of its own", or the system's words.
    virtual void refused(const char* path, const char* reason) = 0;
};

/// The one implementation of PluginManager; what it offers beyond that serves hosts that tell their
/// users more. Made by newDefaultPluginManager, freed by `release`.
///
/// Its tables: the libraries in the order of loading (until one is unloaded and the last takes its
/// place), the descriptors by name, and the instances by ascending number. A descriptor is looked
/// up by name in one step; by id the manager asks every library, as it keeps no list of its own
/// that a library could disagree with.
class DefaultPluginManager final : public PluginManager {
public:
    DefaultPluginManager();
    ~DefaultPluginManager() override;

    // The manager itself comes from where its tables do: one that can't be had is an ExceptionMsg.
    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* memory) { freeMemory(memory); }

    // The operations of PluginManager, in its order; that header says what they do and answer.

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

    /// The full path of a loaded library; empty for the host's own, null if it isn't loaded. Valid
    /// until a library is loaded or unloaded, as the record that holds it may then move.
    const char* getLibraryFileName(const PluginLibDesc* library) const;

    /// Loads the library of exactly this path, with no mask in it, so that `*` and `?` in a file's
    /// name stand for themselves. Null if it is refused. What the library throws is reported and
    /// goes no further. A file that is loaded already is entered and registered a second time, so
    /// callers pass over files that they have tried.
    PluginLibDesc* loadLibraryFile(const char* path, PelkPluginHost* host, MessageLog* log);

    /// Has `callback` told of every library that is refused from now on, next to what the log
    /// gets; null ends it. The callback stays the caller's.
    void setRefusedCallback(LibraryRefusedCallback* callback) { refusedCallback = callback; }

private:
    friend class SystemLibDesc;  // enters and drops names
    class AttachDescCb;          // both in plugin_manager_load.cpp: what is done with each
    class DetachDescCb;          // descriptor of a library that comes or goes
    using GetLibDesc = PluginLibDesc* (*)();
    using PluginMap =
        std::map<u64, Plugin*, std::less<>, BaseAllocator<std::pair<const u64, Plugin*>>>;

    // plugin_manager_load.cpp. From outside inwards; only loadFittingFile knows what makes a file a
    // library of plug-ins.
    /// Loads one file and tells the callback of refusals; what the library throws goes through.
    PluginLibDesc* loadFile(const char* path, PelkPluginHost* host, MessageLog& log);
    /// Loads a file whose path fits a record. Null if it is refused, which is reported.
    PluginLibDesc* loadFittingFile(const char* path, PelkPluginHost* host, MessageLog& log);
    /// Enters a module and asks it for its description; without one takes it out again, and null.
    PluginLibDesc* addLibrary(const char* path, platform::ModuleHandle module, GetLibDesc getDesc);
    bool unloadAt(int index, PelkPluginHost* host);
    /// Tells the callback, if there is one; always null, as the answer of who refuses.
    PluginLibDesc* refuse(const char* path, const char* reason);

    // plugin_manager_descs.cpp
    /// A registered descriptor with the id of `desc`, null if the id is free.
    PluginDesc* findDuplicate(PluginDesc* desc);
    void searchLibrary(const LoadedLibrary& library, EnumPluginDescCallback& callback);
    void enterName(PluginDesc* desc) { descsByName.insert(desc->getName(), desc); }
    void dropName(PluginDesc* desc) { descsByName.remove(desc->getName()); }

    SystemLibDesc systemLib{*this};
    GrowTable<LoadedLibrary> libraries{100};  // the first one is systemLib
    PluginMap plugins;                        // ordered: instances are shown and deleted by number
    u64 nextPluginID = 0;                     // the last one given out, whatever the name says
    PluginNameTable descsByName;
    LibraryRefusedCallback* refusedCallback = nullptr;
};

/// A manager that knows no library but the host's own, still empty. The caller ends it by
/// `release`. Lack of memory is an ExceptionMsg.
DefaultPluginManager* newDefaultPluginManager();

}  // namespace Tarnkit
