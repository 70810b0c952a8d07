#include <CLI/CLI.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/base/thrown_text.h"
#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/cli/interrupt.h"
#include "pelk/platform/console.h"
#include "pelk/support/spelling.h"

namespace {

using namespace Tarnkit;

constexpr char kFooter[] =
    "\nA first picture:\n"
    "  pelk render scenes/cornell.json -o cornell.png\n"
    "\nExit codes: 0 done, 1 bad input, 2 bad usage, 3 output failed, 4 the picture has errors\n"
    "(under --strict), 5 memory or a read failed, 130 interrupted.";

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

ExitCode runGuarded(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (...) {
        print(Stream::Error, complaint(thrownText()).add("\n"));
        return ExitCode::BadInput;
    }
}

}  // namespace

int main(int argc, char** argv) {
    platform::fillClosedStreams();
    ignoreFileSizeSignal();
    ExitCode exitCode = runGuarded(argc, argv);
    std::string error;
    if (!platform::finishStandardOutput(error)) {
        print(Stream::Error, complaint("cannot write the results: " + error + "\n"));
        if (exitCode == ExitCode::Done)
            exitCode = ExitCode::OutputFailed;
    }
    return static_cast<int>(exitCode);
}
