#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Tarnkit {

class ConsoleLog;
class HostSession;

/// Where plug-in libraries are looked for; options that all commands share.
struct PluginOptions {
    std::string directories;  ///< separated by `;`; empty for the usual places

    void addTo(CLI::App& command);
    /// The directories to look in. The usual places are the one that comes with this program and
    /// those of the environment variable PELK_PLUGIN_PATH.
    std::string searchPath() const;
};

/// Loads what stands in the directories. A library that is refused is a warning while there are
/// others. False if there are none; `error` then lists what was tried.
bool loadModules(HostSession& session, const PluginOptions& options, ConsoleLog& log,
                 std::string& error);

/// ", did you mean ...?" for a name of a kind of plug-in that the session doesn't know.
std::string nearestKind(const HostSession& session, const std::string& name);

}  // namespace Tarnkit
