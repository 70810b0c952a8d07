#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/parameters.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

class MessageLog;
class DefaultPluginManager;
class PluginManager;

/// A kind of plug-in that scenes can use.
struct PluginKind {
    PluginDesc* desc = nullptr;
    std::string library;      ///< path of the module; empty for the host's own plug-ins
    std::string libraryName;  ///< what the library calls itself
    std::vector<const ParameterDesc*> parameters;  ///< in their order

    const char* getName() const { return desc->getName(); }
    /// The parameter of that name, or null.
    const ParameterDesc* findParameter(std::string_view name) const;
};

/// A library that could not be used.
struct RejectedLibrary {
    std::string path;
    std::string reason;
};

/// All that the host knows of plug-ins: the manager, its own kinds, and those of the modules that
/// were loaded. Outlives every scene.
class HostSession {
public:
    /// Registers the host's own plug-ins.
    HostSession();
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    /// Loads every library (`*.so`) in the directories, which are separated by `;`; a file that was
    /// loaded before is passed over. `log` may be null; libraries that were refused are listed all
    /// the same.
    void loadModules(const std::string& directories, MessageLog* log);
    const std::vector<RejectedLibrary>& getRejected() const;

    /// Every kind, in the order in which the manager enumerates them.
    std::vector<const PluginKind*> getKinds() const;
    /// The names of all kinds, in the same order; views into the descriptors.
    std::vector<std::string_view> getKindNames() const;
    /// The kind of that name, or null.
    const PluginKind* findKind(std::string_view name) const;
    /// The names of the interfaces that an instance answers, in order of their ids. None, and a
    /// refusal in the list, if the plug-in gives no instance.
    std::vector<const char*> getInterfaceNames(const PluginKind& kind) const;

    PluginManager& getManager() const;
    PelkPluginHost* getPluginHost() const;

private:
    class Registry;
    struct OwnPlugins;

    std::unique_ptr<Registry> registry;
    std::unique_ptr<OwnPlugins> own;
    DefaultPluginManager* manager = nullptr;
};

}  // namespace Tarnkit
