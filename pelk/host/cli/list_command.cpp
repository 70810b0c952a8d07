#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/cli/json_output.h"
#include "pelk/host/cli/plugin_options.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/platform/file.h"
#include "pelk/support/message_text.h"

namespace Tarnkit {

namespace {

struct ListOptions {
    PluginOptions plugins;
    bool json = false;
};

void printLists(const HostSession& session) {
    Json plugins = Json::array(), rejected = Json::array(), shadowed = Json::array();
    for (const PluginKind* kind : session.getKinds()) {
        plugins.push_back({{"name", kind->getName()},
                           {"id", kind->desc->getPluginID()},
                           {"interfaces", session.getInterfaceNames(*kind)},
                           {"library", kind->library}});
    }
    for (const RejectedLibrary& library : session.getRejected())
        rejected.push_back({{"path", library.path}, {"reason", library.reason}});
    for (const ShadowedPlugin& plugin : session.getShadowed())
        shadowed.push_back({{"name", plugin.name},
                            {"id", plugin.id},
                            {"library", plugin.library},
                            {"by", plugin.by}});
    printJson({{"plugins", plugins}, {"rejected", rejected}, {"shadowed", shadowed}});
}

/// The plug-ins of one library, if there are any.
void printKinds(const HostSession& session, const std::string& library) {
    ConsoleText text;
    bool any = false;
    for (const PluginKind* kind : session.getKinds()) {
        if (kind->library != library)
            continue;
        if (!any)
            text.add(library.empty() ? "" : "\n")
                .add(library.empty() ? "Part of this program" : library, Tone::Heading)
                .add("\n");
        any = true;
        text.addf("  %-20s %10u ", kind->getName(), kind->desc->getPluginID());
        for (const char* name : session.getInterfaceNames(*kind))
            text.addf(" %s", name);
        text.add("\n");
    }
    print(Stream::Output, text);
}

/// Prints lines below a heading, if there are any.
void printSection(const char* heading, const std::vector<std::string>& lines) {
    if (lines.empty())
        return;
    ConsoleText text("\n");
    text.add(heading, Tone::Warning).add("\n");
    for (const std::string& line : lines)
        text.add("  " + messageText(line) + "\n");
    print(Stream::Output, text);
}

/// Each library is shown before the next one is loaded, so that one that ends the program can be
/// told from what stands last.
void printText(HostSession& session, const std::string& directories) {
    printKinds(session, "");
    for (const std::string& file : session.findModules(directories)) {
        session.loadModule(file, nullptr);
        printKinds(session, platform::fullPath(file));
    }
    std::vector<std::string> refused, shadowed;
    for (const RejectedLibrary& library : session.getRejected())
        refused.push_back(library.path + ": " + library.reason);
    for (const ShadowedPlugin& plugin : session.getShadowed())
        shadowed.push_back(plugin.toText());
    printSection("Refused", refused);
    printSection("Shadowed", shadowed);
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
        const std::string directories = options->plugins.searchPath();
        if (!options->json)
            return printText(session, directories);
        session.loadModules(directories, nullptr);
        printLists(session);
    });
}

}  // namespace Tarnkit
