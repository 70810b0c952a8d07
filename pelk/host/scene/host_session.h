#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/parameters.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

class MessageLog;
class DefaultPluginManager;
class PluginManager;
class PluginRegistry;

/// A kind of plug-in that scenes can use, such as MtlDiffuse: what its descriptor has registered.
struct PluginKind {
    PluginDesc* desc = nullptr;
    std::string library;      ///< path of the module; empty for the host's own plug-ins
    std::string libraryName;  ///< what the library calls itself
    std::vector<const ParameterDesc*> parameters;  ///< in the order of the descriptor

    const char* getName() const { return desc->getName(); }
    /// The parameter of that name, or null.
    const ParameterDesc* findParameter(std::string_view name) const;
};

/// A library that could not be used, or what could not be used of one.
struct RejectedLibrary {
    std::string path;
    std::string reason;
};

/// A plug-in that can't be used, since another one with its name came first.
struct ShadowedPlugin {
    std::string name;
    u32 id = 0;
    std::string library, by;  ///< paths of its module and of the other's, as PluginKind::library

    /// A line about it.
    std::string toText() const;
};

/// The path of a module for people; what the host's own plug-ins come from for an empty one.
std::string libraryText(const std::string& path);

/// All that the host knows of plug-ins: the manager, its own kinds, and those of the libraries that
/// were loaded. Made by each command and used on one thread. Outlives every scene, since instances
/// run code that the session keeps loaded.
class HostSession {
public:
    /// Registers the host's own plug-ins.
    HostSession();
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    /// Loads every library (`*.so`) in the directories, which are separated by `;`. A file that was
    /// tried before, under whatever name, is passed over, and a file or directory that any user of
    /// the machine may write to is refused. `log` may be null; libraries that were
    /// refused, and directories that don't exist, are listed by getRejected all the same.
    void loadModules(const std::string& directories, MessageLog* log);
    /// The same in steps, for who tells how far it has come: the files, in their order, and the
    /// loading of one.
    std::vector<std::string> findModules(const std::string& directories);
    void loadModule(const std::string& path, MessageLog* log);
    /// What could not be used so far, each file and reason once.
    const std::vector<RejectedLibrary>& getRejected() const;
    const std::vector<ShadowedPlugin>& getShadowed() const;
    /// All of them as the end of a message about a plug-in that isn't there: "; refused: PATH
    /// (REASON)" for each.
    std::string getRejectedText() const;

    /// Every kind that can be used, in the order in which the manager enumerates them. The kinds
    /// live until a further library is loaded.
    std::vector<const PluginKind*> getKinds() const;
    /// The names of all kinds, in the same order; views into the descriptors.
    std::vector<std::string_view> getKindNames() const;
    /// The kind of that name, or null.
    const PluginKind* findKind(std::string_view name) const;
    /// The names of the interfaces that an instance offers, in the order of knownInterfaces. Makes
    /// an instance to ask it, and deletes it again. None, and an entry in getRejected, if the
    /// plug-in gives no instance.
    std::vector<const char*> getInterfaceNames(const PluginKind& kind) const;

    PluginManager& getManager() const;
    /// What descriptors are registered with; instances get it when they are made.
    PelkPluginHost* getPluginHost() const;

private:
    struct OwnPlugins;

    std::unique_ptr<PluginRegistry> registry;
    std::unique_ptr<OwnPlugins> own;
    DefaultPluginManager* manager = nullptr;
    std::set<std::string> triedFiles;
};

}  // namespace Tarnkit
