#include "pelk/host/cli/scene_command.h"

#include <CLI/CLI.hpp>
#include <cassert>
#include <filesystem>

#include "pelk/host/scene/scene_reader.h"
#include "pelk/platform/file.h"

namespace Tarnkit {

void SceneOptions::addFileTo(CLI::App& command) {
    command.add_option("SCENE", file, "Scene file; - is the standard input")
        ->required()
        ->type_name("");
}

void SceneOptions::addConfineTo(CLI::App& command) {
    confine =
        command
            .add_option("--confine", folders,
                        "Hold the scene to files in its own folder, and in those named, "
                        "whatever leads out of them: for scenes of others. Comes behind SCENE")
            ->type_name("DIR")
            ->expected(0, 64);
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

void SceneCommand::confine() {
    if (!options.confine || options.confine->empty())
        return;
    std::vector<std::string> folders = options.folders;
    std::erase(folders, std::string());  // of an option without any
    folders.push_back(std::filesystem::path(platform::nativePath(options.file)).parent_path());
    confinement.emplace(folders);
}

ExitCode SceneCommand::openScene() {
    confine();
    std::string error;
    bool systemFault = false;
    if (loadModules(session, options.plugins, log, error))
        scene = readScene(session, options.file, options.overrides, error, &systemFault);
    if (!scene)
        return fail(systemFault ? ExitCode::SystemFailed : ExitCode::BadInput, error);
    scene->log = &log;
    return ExitCode::Done;
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
