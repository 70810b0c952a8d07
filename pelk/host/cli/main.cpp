#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/render/plugin_faults.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/platform/console.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/memory_shortage.h"
#include "pelk/platform/output_file.h"
#include "pelk/platform/stop_signals.h"
#include "pelk/support/message_text.h"
#include "pelk/support/spelling.h"

namespace {

using namespace Tarnkit;

constexpr char kFooter[] =
    "\nA first picture:\n"
    "  pelk render scenes/cornell.json -o cornell.png\n"
    "\nExit codes, for scripts that try again or don't:\n"
    "  0 done    1 bad input    2 bad usage    4 the picture has errors, under --strict\n"
    "  3 output failed    5 no memory, or a file can't be read    6 a plug-in faulted\n"
    "  129, 130, 143 stopped by SIGHUP, SIGINT (Ctrl-C), SIGTERM";

/// What is wrong with the word that stands in the place of the command; empty if nothing is.
std::string checkCommand(const CLI::App& program, int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-')
        return {};
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands(nullptr))
        names.push_back(command->get_name());
    const std::string_view word = argv[1];
    if (std::find(names.begin(), names.end(), word) != names.end())
        return {};
    const std::vector<std::string_view> views(names.begin(), names.end());
    return "there is no command \"" + std::string(word) + "\"" + didYouMean(word, views);
}

ExitCode run(int argc, char** argv) {
    CLI::App program{"Renders scenes, and explains the plug-ins that scenes are made of.", "pelk"};
    program.set_version_flag("--version", "pelk " PELK_VERSION);
    program.require_subcommand(1);
    ExitCode exitCode = ExitCode::Done;
    addRenderCommand(program, exitCode);
    addMergeCommand(program, exitCode);
    addListCommand(program, exitCode);
    addInfoCommand(program, exitCode);
    addDescribeCommand(program, exitCode);
    addProbeCommand(program, exitCode);
    program.footer(kFooter);  // behind the commands: each inherits the footer that it finds

    program.failure_message([](const CLI::App*, const CLI::Error& error) {
        return messageText(error.what()) + "\nRun with --help for more information.\n";
    });
    const std::string wrongCommand = checkCommand(program, argc, argv);
    if (!wrongCommand.empty()) {
        print(Stream::Error, complaint(wrongCommand).add("\nRun pelk --help for the commands.\n"));
        return ExitCode::BadUsage;
    }
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream answer, fault;
        const int status = program.exit(error, answer, fault);
        print(Stream::Output, answer.str());
        print(Stream::Error, fault.str());
        return status == 0 ? ExitCode::Done : ExitCode::BadUsage;
    }
    return exitCode;
}

/// Ends the program with a line of text where nothing else of it can be trusted to run.
[[noreturn]] void endWith(ExitCode code, const char* line) {
    platform::dropUnfinishedOutput();
    platform::writeErrorOutput(line);
    std::_Exit(static_cast<int>(code));
}

/// Whether an exception that nobody caught is about memory, or a thread that can't be had: the
/// libraries throw both in places that no exception may leave.
bool isShortage() {
    try {
        if (std::current_exception())
            throw;
    } catch (const std::bad_alloc&) {
        return true;
    } catch (const std::system_error&) {
        return true;
    } catch (...) {
    }
    return platform::hadMemoryShortage();
}

/// Of an exception that a plug-in doesn't let out, and of whatever else ends here.
[[noreturn]] void onTerminate() {
    if (isShortage())
        endWith(ExitCode::SystemFailed, "pelk: out of memory\n");
    endByTerminate();
    platform::dropUnfinishedOutput();
    std::abort();
}

// The sanitizers have tables of their own to set up first.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
/// Runs before the constructors of the libraries that the image library brings along, some of which
/// end in a fault without memory, or start threads.
void checkMemoryForStart(int, char**, char**) {
    constexpr std::size_t kLibraries = std::size_t{40} << 20;
    constexpr int kThreads = 4;
    std::set_terminate(onTerminate);
    if (!platform::canHaveMemory(kLibraries, kThreads))
        endWith(ExitCode::SystemFailed, "pelk: out of memory before the start\n");
}

[[gnu::section(".preinit_array"),
  gnu::used]] void (*const kBeforeLibraries)(int, char**, char**) = checkMemoryForStart;
#endif

ExitCode runGuarded(int argc, char** argv) {
    const PluginFaultWatch watch(static_cast<int>(ExitCode::PluginFaulted));
    const PluginFaultGuard faults;
    try {
        return run(argc, argv);
    } catch (...) {
        // Bad input has its answers; what is thrown as far as here is lack of memory, or the like.
        print(Stream::Error, complaint(failureText()).add("\n"));
        return ExitCode::SystemFailed;
    }
}

/// Where memory has run out, what a library calls broken or unwritable need not be that.
ExitCode judge(ExitCode code) {
    const bool mayBeMemory = code == ExitCode::BadInput || code == ExitCode::OutputFailed;
    return mayBeMemory && platform::hadMemoryShortage() ? ExitCode::SystemFailed : code;
}

}  // namespace

int main(int argc, char** argv) {
    platform::fillClosedStreams();
    platform::ignoreWriteSignals();
    std::set_terminate(onTerminate);
    platform::watchMemory();
    ExitCode exitCode = judge(runGuarded(argc, argv));
    std::string error;
    if (!platform::finishStandardOutput(error)) {
        print(Stream::Error, complaint("cannot write the results: " + error).add("\n"));
        if (exitCode == ExitCode::Done)
            exitCode = ExitCode::OutputFailed;
    }
    // What libraries do at an exit takes memory, and they abort without it.
    if (platform::hadMemoryShortage())
        std::_Exit(static_cast<int>(exitCode));
    return static_cast<int>(exitCode);
}
