#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Tarnkit {

class ConsoleLog;
class HostSession;

/// Where plug-in libraries are looked for: the option --plugins, which all commands share.
struct PluginOptions {
    std::string directories;  ///< separated by `;`; empty for the usual places

    void addTo(CLI::App& command);
    /// The directories to look in, separated by `;`. The usual places are lib/pelk/ beside the
    /// program's own bin/, and those of the environment variable PELK_PLUGIN_PATH.
    std::string searchPath() const;
};

/// Loads all libraries in the directories. One that is refused is a warning, as long as another one
/// could be loaded. False if none could; `error` then lists what was tried and why it was refused.
bool loadModules(HostSession& session, const PluginOptions& options, ConsoleLog& log,
                 std::string& error);

/// ", did you mean ...?" for a name of a kind of plug-in that the session doesn't know.
std::string nearestKind(const HostSession& session, const std::string& name);

}  // namespace Tarnkit
