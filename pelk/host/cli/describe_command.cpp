#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "pelk/contract/pelk_material.h"
#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/common_options.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/cli/scene_command.h"
#include "pelk/host/render/describe_job.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

struct DescribeOptions : SceneOptions {
    std::string instance;
    std::string section = "MaterialDescriptor";
};

/// The interface by which the instance describes itself as text for GPU renderers; null with a text
/// that says what is wrong.
RTMtlInterface* findMaterial(const Scene& scene, const std::string& name, std::string& error) {
    Plugin* const plugin = scene.findPlugin(name);
    if (!plugin) {
        error = scene.file + ": there is no instance \"" + name + "\"" +
                didYouMean(name, scene.getNames());
        return nullptr;
    }
    auto* const material = findInterface<RTMtlInterface>(plugin);
    if (!material)
        error = scene.file + ": \"" + name + "\" is a " + plugin->getPluginTypeName() +
                ", which does not describe itself as text (it has no EXT_RTMTL)";
    return material;
}

ExitCode run(const DescribeOptions& options) {
    SceneCommand command(options);
    if (!command.openLog())
        return ExitCode::BadInput;
    if (const ExitCode code = command.openScene(); code != ExitCode::Done)
        return code;
    Scene& scene = command.getScene();
    std::string error;
    RTMtlInterface* const material = findMaterial(scene, options.instance, error);
    if (!material)
        return command.fail(ExitCode::BadInput, error);
    const DescribeResult result =
        describeMaterial(scene, *material, options.section.c_str(), &command.getLog());
    if (!result.ok)
        return command.fail(ExitCode::BadInput, result.error);
    printResult(result.text);
    if (!result.handled)
        command.getLog().info("\"%s\" has no %s", options.instance.c_str(),
                              options.section.c_str());
    return ExitCode::Done;
}

}  // namespace

void addDescribeCommand(CLI::App& program, ExitCode& exitCode) {
    CLI::App* const command = program.add_subcommand(
        "describe", "Prints the text by which a material of a scene describes itself");
    const auto options = std::make_shared<DescribeOptions>();
    options->addFileTo(*command);
    command->add_option("INSTANCE", options->instance, "Name of the material in the scene")
        ->required()
        ->type_name("");
    command->add_option("--section", options->section, "The part of the text that is wanted")
        ->check(CLI::IsMember({"MaterialDescriptor", "HierarchyDescriptor"}))
        ->type_name("")
        ->capture_default_str();
    addSetOption(*command, options->overrides);
    options->addConfineTo(*command);
    options->plugins.addTo(*command);
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

}  // namespace Tarnkit
