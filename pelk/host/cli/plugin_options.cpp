#include "pelk/host/cli/plugin_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>

#include "pelk/host/cli/console_log.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/platform/file.h"
#include "pelk/platform/system_info.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

/// The directory that comes with the program, in a build tree as where it is installed.
std::string ownDirectory() {
    char program[4096];
    if (!platform::executablePath(program, sizeof program))
        return {};
    return platform::fullPath(std::string(program) + "/../../lib/pelk");
}

}  // namespace

void PluginOptions::addTo(CLI::App& command) {
    command
        .add_option("--plugins", directories,
                    "Directories of plug-in libraries, separated by ';', in the place of the "
                    "usual: the one that comes with pelk, and those in PELK_PLUGIN_PATH")
        ->type_name("DIR;DIR");
}

std::string PluginOptions::searchPath() const {
    if (!directories.empty())
        return directories;
    const char* const more = std::getenv("PELK_PLUGIN_PATH");
    return ownDirectory() + (more ? ";" + std::string(more) : "");
}

bool loadModules(HostSession& session, const PluginOptions& options, ConsoleLog& log,
                 std::string& error) {
    const std::string path = options.searchPath();
    session.loadModules(path, log.isVerbose() ? &log : nullptr);
    const auto kinds = session.getKinds();
    const bool any = std::any_of(kinds.begin(), kinds.end(),
                                 [](const PluginKind* kind) { return !kind->library.empty(); });
    if (any) {
        for (const RejectedLibrary& library : session.getRejected())
            log.warning("%s: %s", library.path.c_str(), library.reason.c_str());
        for (const ShadowedPlugin& plugin : session.getShadowed())
            log.warning("%s", plugin.toText().c_str());
        return true;
    }
    error = "no plug-in library found; expected a *.so that exports getLibDesc in " + path +
            session.getRejectedText();
    return false;
}

std::string nearestKind(const HostSession& session, const std::string& name) {
    return didYouMean(name, session.getKindNames());
}

}  // namespace Tarnkit
