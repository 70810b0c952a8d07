#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/common_options.h"
#include "pelk/host/cli/json_output.h"
#include "pelk/host/cli/scene_command.h"
#include "pelk/host/render/probe_job.h"
#include "pelk/host/scene/material_tree.h"

namespace Tarnkit {

namespace {

struct ProbeOptions : SceneOptions {
    std::array<int, 2> pixel{};
    PictureOptions picture;
    bool json = false;
};

Json toJson(const Color& c) {
    return {c.r, c.g, c.b};
}

Json toJson(const Vector& v) {
    return {v.x, v.y, v.z};
}

Json toJson(const MaterialTree& tree) {
    Json references = Json::array();
    for (const MaterialTree& target : tree.references) {
        Json reference = toJson(target);
        reference["parameter"] = target.parameter;
        references.push_back(reference);
    }
    return {{"name", instanceName(tree.plugin)},
            {"type", tree.plugin->getPluginTypeName()},
            {"references", references}};
}

Json toJson(const ProbedHit& hit) {
    return {{"object", instanceName(hit.object)},
            {"type", hit.object->getPluginTypeName()},
            {"triangle", hit.triangle},
            {"distance", hit.distance},
            {"point", {hit.point.x, hit.point.y, hit.point.z}},
            {"normal", toJson(hit.normal)},
            {"geom_normal", toJson(hit.geomNormal)},
            {"back_side", hit.backSide},
            {"uv", {hit.uv.u, hit.uv.v}}};
}

Json resultsOf(const ProbedHit& hit) {
    return {{"color", toJson(hit.color)},
            {"transparency", toJson(hit.transparency)},
            {"alpha", toJson(hit.alpha)},
            {"alpha_transparency", toJson(hit.alphaTransparency)}};
}

/// A number, or an array of them.
Json valueOf(const ProbedChannel& channel) {
    const auto& v = channel.values;
    switch (channel.type) {
        case kChannelInt:
            return channel.id;
        case kChannelFloat:
            return v[0];
        case kChannelFloat2:
            return {v[0], v[1]};
        case kChannelAColor:
            return {v[0], v[1], v[2], v[3]};
        default:
            return {v[0], v[1], v[2]};
    }
}

void printAsJson(const ProbeOptions& options, const RenderOptions& render,
                 const ProbeResult& result, const MaterialTree* tree) {
    Json channels;
    for (const ProbedChannel& channel : result.channels)
        channels[channel.name] = valueOf(channel);
    printJson({{"scene", options.file},
               {"pixel", options.pixel},
               {"size", {render.width, render.height}},
               {"samples", render.samples},
               {"hit", result.hit ? toJson(*result.hit) : Json()},
               {"material", tree ? toJson(*tree) : Json()},
               {"results", result.hit && tree ? resultsOf(*result.hit) : Json()},
               {"channels", channels}});
}

void addVector(ConsoleText& text, const char* name, double x, double y, double z) {
    text.addf("  %-20s  %g, %g, %g\n", name, x, y, z);
}

void addColor(ConsoleText& text, const char* name, const Color& c) {
    addVector(text, name, c.r, c.g, c.b);
}

void addHit(ConsoleText& text, const ProbedHit& hit) {
    text.add("Hit", Tone::Heading).add(", by the ray through the middle of the pixel\n");
    text.addf("  %-20s  %s (%s), triangle %u\n", "object", instanceName(hit.object).c_str(),
              hit.object->getPluginTypeName(), hit.triangle);
    text.addf("  %-20s  %g\n", "distance", hit.distance);
    addVector(text, "point", hit.point.x, hit.point.y, hit.point.z);
    addVector(text, "normal", hit.normal.x, hit.normal.y, hit.normal.z);
    addVector(text, "geometric normal", hit.geomNormal.x, hit.geomNormal.y, hit.geomNormal.z);
    text.addf("  %-20s  %s\n", "side", hit.backSide ? "back" : "front");
    text.addf("  %-20s  %g, %g\n", "uv", hit.uv.u, hit.uv.v);
}

void addTree(ConsoleText& text, const MaterialTree& tree, int level) {
    const std::string by = tree.parameter.empty() ? "" : tree.parameter + ": ";
    text.addf("%*s%s%s (%s)%s\n", 2 * level, "", by.c_str(), instanceName(tree.plugin).c_str(),
              tree.plugin->getPluginTypeName(), tree.seenAbove ? ", see above" : "");
    for (const MaterialTree& target : tree.references)
        addTree(text, target, level + 1);
}

void addResults(ConsoleText& text, const ProbedHit& hit) {
    text.add("\n").add("Results", Tone::Heading).add(", of that ray alone\n");
    addColor(text, "color", hit.color);
    addColor(text, "transparency", hit.transparency);
    addColor(text, "alpha", hit.alpha);
    addColor(text, "alpha transparency", hit.alphaTransparency);
}

void addChannels(ConsoleText& text, const ProbeResult& result, int samples) {
    text.add("\n").add("Channels", Tone::Heading);
    text.addf(", as the picture shows them with %d samples\n", samples);
    for (const ProbedChannel& channel : result.channels) {
        std::string numbers;
        const Json value = valueOf(channel);
        for (const Json& number : value.is_array() ? value : Json::array({value})) {
            char shown[32];
            std::snprintf(shown, sizeof shown, "%s%g", numbers.empty() ? "" : ", ",
                          number.get<double>());
            numbers += shown;
        }
        text.addf("  %-20s  %s\n", channel.name.c_str(), numbers.c_str());
    }
}

void printAsText(const ProbeOptions& options, const RenderOptions& render,
                 const ProbeResult& result, const MaterialTree* tree) {
    ConsoleText text;
    text.addf("Pixel %d,%d of %s, %d x %d\n\n", options.pixel[0], options.pixel[1],
              options.file.c_str(), render.width, render.height);
    if (result.hit)
        addHit(text, *result.hit);
    else
        text.addf("The ray through the middle of the pixel hits nothing\n");
    if (tree) {
        text.add("\n").add("Material", Tone::Heading).add("\n");
        addTree(text, *tree, 1);
        addResults(text, *result.hit);
    } else if (result.hit) {
        text.addf("\nThe object has no material, and is black\n");
    }
    addChannels(text, result, render.samples);
    print(Stream::Output, text);
}

ExitCode run(const ProbeOptions& options) {
    SceneCommand command(options);
    if (!command.openLog())
        return ExitCode::BadInput;
    if (const ExitCode code = command.openScene(); code != ExitCode::Done)
        return code;
    Scene& scene = command.getScene();
    RenderOptions render = options.picture.forRender(scene.settings);
    render.channels = {"all"};
    const auto [x, y] = options.pixel;
    if (x >= render.width || y >= render.height)
        return command.fail(ExitCode::BadUsage, "--pixel lies outside; the picture has " +
                                                    std::to_string(render.width) + " x " +
                                                    std::to_string(render.height) + " pixels");
    const ProbeResult result = probePixel(scene, render, x, y, &command.getLog());
    if (!result.ok)
        return command.fail(ExitCode::BadInput, options.file + ": " + result.error);
    std::optional<MaterialTree> tree;
    if (result.hit && result.hit->material)
        tree = followReferences(command.getSession(), scene, result.hit->material);
    (options.json ? printAsJson : printAsText)(options, render, result, tree ? &*tree : nullptr);
    return ExitCode::Done;
}

}  // namespace

void addProbeCommand(CLI::App& program, ExitCode& exitCode) {
    CLI::App* const command = program.add_subcommand(
        "probe", "Tells what one pixel of a picture shows: the hit, its material, all channels");
    const auto options = std::make_shared<ProbeOptions>();
    options->addFileTo(*command);
    command
        ->add_option_function<std::string>(
            "--pixel",
            [options](const std::string& text) {
                if (!parseNumbers(text, ',', options->pixel))
                    refuse("--pixel", text, "X,Y in pixels from the upper left corner");
            },
            "The pixel, from 0,0 in the upper left corner")
        ->type_name("X,Y")
        ->required();
    options->picture.addTo(*command);
    addSetOption(*command, options->overrides);
    options->addConfineTo(*command);
    options->plugins.addTo(*command);
    command->add_flag("--json", options->json, "Print JSON");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

}  // namespace Tarnkit
