#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/pelk_material.h"
#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/common_options.h"
#include "pelk/host/cli/console_log.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/cli/plugin_options.h"
#include "pelk/host/render/describe_job.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_reader.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

struct DescribeOptions {
    PluginOptions plugins;
    std::string scene, instance;
    std::string section = "MaterialDescriptor";
    std::vector<std::string> overrides;
    LogOptions log;
};

/// The instance's face for descriptions; null with a text that says what is wrong.
RTMtlInterface* findMaterial(const Scene& scene, const std::string& name, std::string& error) {
    Plugin* const plugin = scene.findPlugin(name);
    if (!plugin) {
        std::vector<std::string_view> names;
        for (const Plugin* other : scene.getPlugins())
            names.push_back(other->getPluginName());
        error = scene.file + ": there is no instance \"" + name + "\"" + didYouMean(name, names);
        return nullptr;
    }
    auto* const material = findInterface<RTMtlInterface>(plugin);
    if (!material)
        error = scene.file + ": \"" + name + "\" is a " + plugin->getPluginTypeName() +
                ", which does not describe itself as text (it has no EXT_RTMTL)";
    return material;
}

ExitCode run(const DescribeOptions& options) {
    Diagnostics diagnostics;
    StatusLine status;
    ConsoleLog log(status, diagnostics, options.log.verbose);
    std::string error;
    const auto fail = [&](const std::string& text) {
        log.complain(text);
        return ExitCode::BadInput;
    };

    if (options.log.debugLog && !diagnostics.keepIn(*options.log.debugLog, error))
        return fail(error);
    HostSession session;
    if (!loadModules(session, options.plugins, log, error))
        return fail(error);
    const auto scene = readScene(session, options.scene, options.overrides, error);
    if (!scene)
        return fail(error);
    RTMtlInterface* const material = findMaterial(*scene, options.instance, error);
    if (!material)
        return fail(error);
    const DescribeResult result =
        describeMaterial(*scene, *material, options.section.c_str(), &log);
    if (!result.ok)
        return fail(result.error);
    printResult(result.text);
    if (!result.handled)
        log.info("\"%s\" has no %s", options.instance.c_str(), options.section.c_str());
    return ExitCode::Done;
}

}  // namespace

void addDescribeCommand(CLI::App& program, ExitCode& exitCode) {
    CLI::App* const command = program.add_subcommand(
        "describe", "Prints the text by which a material of a scene describes itself");
    const auto options = std::make_shared<DescribeOptions>();
    command->add_option("SCENE", options->scene, "Scene file")->required()->type_name("");
    command->add_option("INSTANCE", options->instance, "Name of the material in the scene")
        ->required()
        ->type_name("");
    command->add_option("--section", options->section, "The part of the text that is wanted")
        ->check(CLI::IsMember({"MaterialDescriptor", "HierarchyDescriptor"}))
        ->type_name("")
        ->capture_default_str();
    addSetOption(*command, options->overrides);
    options->plugins.addTo(*command);
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

}  // namespace Tarnkit
