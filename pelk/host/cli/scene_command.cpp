#include "pelk/host/cli/scene_command.h"

#include <CLI/CLI.hpp>
#include <cassert>

#include "pelk/host/scene/scene_reader.h"

namespace Tarnkit {

void SceneOptions::addFileTo(CLI::App& command) {
    command.add_option("SCENE", file, "Scene file; - is the standard input")
        ->required()
        ->type_name("");
}

SceneCommand::SceneCommand(const SceneOptions& commandOptions)
    : options(commandOptions), log(status, diagnostics, commandOptions.log.verbose) {}

bool SceneCommand::openLog() {
    std::string error;
    if (!options.log.debugLog || diagnostics.keepIn(*options.log.debugLog, error))
        return true;
    log.complain(error);
    return false;
}

ExitCode SceneCommand::openScene() {
    std::string error;
    bool systemFault = false;
    if (loadModules(session, options.plugins, log, error))
        scene = readScene(session, options.file, options.overrides, error, &systemFault);
    if (scene)
        return ExitCode::Done;
    return fail(systemFault ? ExitCode::SystemFailed : ExitCode::BadInput, error);
}

Scene& SceneCommand::getScene() {
    assert(scene);
    return *scene;
}

ExitCode SceneCommand::fail(ExitCode code, const std::string& text) {
    log.complain(text);
    return code;
}

}  // namespace Tarnkit
