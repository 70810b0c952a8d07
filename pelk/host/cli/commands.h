#pragma once

namespace CLI {
class App;
}

namespace Tarnkit {

/// What the program answers to its caller, as the help text lists it.
enum class ExitCode {
    Done = 0,
    BadInput = 1,          ///< a scene, a plug-in or what they name is wrong
    BadUsage = 2,          ///< the command line is wrong
    OutputFailed = 3,      ///< a picture or the results could not be written
    PictureHasErrors = 4,  ///< under --strict alone
    SystemFailed = 5,      ///< no memory, or a file can't be read: may succeed another time
    PluginFaulted = 6,     ///< a plug-in did what the processor refuses
    HungUp = 129,          ///< stopped by SIGHUP: 128 and its number, as shells count
    Interrupted = 130,     ///< by SIGINT, Ctrl-C
    Terminated = 143,      ///< by SIGTERM
};

// Each adds one command to the program. If the command line asks for it, it runs while the command
// line is parsed, and leaves its outcome in `exitCode`.
void addRenderCommand(CLI::App& program, ExitCode& exitCode);
void addMergeCommand(CLI::App& program, ExitCode& exitCode);
void addListCommand(CLI::App& program, ExitCode& exitCode);
void addInfoCommand(CLI::App& program, ExitCode& exitCode);
void addDescribeCommand(CLI::App& program, ExitCode& exitCode);
void addProbeCommand(CLI::App& program, ExitCode& exitCode);

}  // namespace Tarnkit
