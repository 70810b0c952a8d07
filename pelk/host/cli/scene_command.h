#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_log.h"
#include "pelk/host/cli/plugin_options.h"
#include "pelk/host/plugins/confinement.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene.h"

namespace CLI {
class Option;
}

namespace Tarnkit {

/// Options of every command that reads a scene file.
struct SceneOptions {
    std::string file;
    std::vector<std::string> overrides;  ///< one `--set` each, as readScene takes them
    PluginOptions plugins;
    LogOptions log;
    const CLI::Option* confine = nullptr;  ///< --confine, if it is there
    std::vector<std::string> folders;      ///< its further folders

    /// Adds the argument SCENE, the file's name. The options are added by their own operations,
    /// wherever the command's help text is to show them.
    void addFileTo(CLI::App& command);
    /// Adds `--confine [DIR]...`
    void addConfineTo(CLI::App& command);
};

/// What the commands `render`, `probe` and `describe` work on: the messages, the plug-ins that were
/// loaded, and the scene that was read with them. Lives while the command runs, on one thread.
/// Whatever fails has been reported on standard error by the time an operation returns.
class SceneCommand {
public:
    /// `options` must outlive the command.
    explicit SceneCommand(const SceneOptions& options);

    /// Opens the debug log, if one is asked for. Comes first, so that the log holds all messages.
    /// False after a failure; the command then ends with ExitCode::BadInput.
    bool openLog();

    /// Loads the libraries of plug-ins and reads the scene, held to its folders if that is asked
    /// for. The command ends with the answer, unless that is ExitCode::Done.
    ExitCode openScene();

    /// Reports what is wrong, and returns `code` for the command to end with.
    ExitCode fail(ExitCode code, const std::string& text);

    StatusLine& getStatus() { return status; }
    ConsoleLog& getLog() { return log; }
    HostSession& getSession() { return session; }
    /// Only after an openScene that went well.
    Scene& getScene();

private:
    void confine();

    // In this order, as each uses the ones above it to its end: a log writes to the status line and
    // the diagnostics, and a scene deletes its instances through the session's plug-in manager.
    const SceneOptions& options;
    Diagnostics diagnostics;
    StatusLine status;
    ConsoleLog log;
    std::optional<Confinement> confinement;
    HostSession session;
    std::unique_ptr<Scene> scene;
};

}  // namespace Tarnkit
