#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "pelk/commands.h"
#include "pelk/json_output.h"
#include "pelk/plugin_options.h"
#include "render/host_session.h"

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
    const PluginKind* last = nullptr;
    for (const PluginKind* kind : session.getKinds()) {
        if (!last || last->library != kind->library)
            std::printf("%s%s\n", last ? "\n" : "",
                        kind->library.empty() ? "Part of this program" : kind->library.c_str());
        last = kind;
        std::printf("  %-20s %10u ", kind->getName(), kind->desc->getPluginID());
        for (const char* name : session.getInterfaceNames(*kind))
            std::printf(" %s", name);
        std::printf("\n");
    }
    if (!session.getRejected().empty())
        std::printf("\nRefused\n");
    for (const RejectedLibrary& library : session.getRejected())
        std::printf("  %s: %s\n", library.path.c_str(), library.reason.c_str());
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
