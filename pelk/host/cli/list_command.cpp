#include <CLI/CLI.hpp>
#include <memory>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/cli/json_output.h"
#include "pelk/host/cli/plugin_options.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/support/message_text.h"

namespace Tarnkit {

namespace {

struct ListOptions {
    PluginOptions plugins;
    bool json = false;
};

void printLists(const HostSession& session) {
    Json plugins = Json::array(), rejected = Json::array();
    for (const PluginKind* kind : session.getKinds()) {
        plugins.push_back({{"name", kind->getName()},
                           {"id", kind->desc->getPluginID()},
                           {"interfaces", session.getInterfaceNames(*kind)},
                           {"library", kind->library}});
    }
    for (const RejectedLibrary& library : session.getRejected())
        rejected.push_back({{"path", library.path}, {"reason", library.reason}});
    printJson({{"plugins", plugins}, {"rejected", rejected}});
}

void printText(const HostSession& session) {
    ConsoleText text;
    const PluginKind* last = nullptr;
    for (const PluginKind* kind : session.getKinds()) {
        if (!last || last->library != kind->library)
            text.add(last ? "\n" : "")
                .add(kind->library.empty() ? "Part of this program" : kind->library, Tone::Heading)
                .add("\n");
        last = kind;
        text.addf("  %-20s %10u ", kind->getName(), kind->desc->getPluginID());
        for (const char* name : session.getInterfaceNames(*kind))
            text.addf(" %s", name);
        text.add("\n");
    }
    if (!session.getRejected().empty())
        text.add("\n").add("Refused", Tone::Warning).add("\n");
    for (const RejectedLibrary& library : session.getRejected())
        text.add("  " + messageText(library.path + ": " + library.reason) + "\n");
    print(Stream::Output, text);
}

}  // namespace

void addListCommand(CLI::App& program, ExitCode&) {
    CLI::App* const command = program.add_subcommand(
        "list", "Lists every plug-in found, and every library that was refused, with the reason");
    const auto options = std::make_shared<ListOptions>();
    options->plugins.addTo(*command);
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options] {
        HostSession session;
        session.loadModules(options->plugins.searchPath(), nullptr);
        options->json ? printLists(session) : printText(session);
    });
}

}  // namespace Tarnkit
