#include <CLI/CLI.hpp>
#include <charconv>
#include <memory>
#include <string>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_text.h"
#include "pelk/host/cli/json_output.h"
#include "pelk/host/cli/plugin_options.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/interface_names.h"

namespace Tarnkit {

namespace {

struct InfoOptions {
    PluginOptions plugins;
    std::string name;
    bool json = false;
};

/// The number that is read back as `value` with the fewest digits: 0.3, not 0.30000001192092896.
double shortest(float value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    double result = 0.0;
    std::from_chars(text, end, result);
    return result;
}

Json textOrNull(const char* text) {
    return text ? Json(text) : Json();
}

/// The name of the type; the number of a type without one.
Json typeOf(const ParameterDesc& parameter) {
    switch (parameter.type) {
        case ParameterType::Bool:
            return "bool";
        case ParameterType::Int:
            return "int";
        case ParameterType::Float:
            return "float";
        case ParameterType::Color:
            return "color";
        case ParameterType::Plugin:
            return "plugin";
        case ParameterType::String:
            return "string";
        case ParameterType::Texture:
            return "texture";
        case ParameterType::TextureFloat:
            return "texture_float";
        case ParameterType::TextureInt:
            return "texture_int";
        case ParameterType::Other:
            // In a scene it is written as any other list of numbers with textures.
            if (parameter.isTexturedFloats())
                return "texture_float";
    }
    return parameter.typeNumber;
}

Json defaultOf(const ParameterDesc& parameter) {
    if (!parameter.hasDefault)
        return nullptr;
    const Color& color = parameter.colorDefault.color;
    switch (parameter.type) {
        case ParameterType::Bool:
            return parameter.intDefault != 0;
        case ParameterType::Int:
        case ParameterType::TextureInt:
            return parameter.intDefault;
        case ParameterType::Float:
        case ParameterType::TextureFloat:
            return shortest(color.r);
        case ParameterType::Color:
            return Json::array({shortest(color.r), shortest(color.g), shortest(color.b)});
        case ParameterType::Texture:
            return Json::array({shortest(color.r), shortest(color.g), shortest(color.b),
                                shortest(parameter.colorDefault.alpha)});
        case ParameterType::String:
            return textOrNull(parameter.stringDefault);
        case ParameterType::Plugin:
        case ParameterType::Other:
            break;
    }
    return nullptr;
}

/// The interface that a value must offer; its number if it has no name, null if there is none.
Json interfaceOf(const ParameterDesc& parameter) {
    if (parameter.interfaceID == 0)
        return nullptr;
    const char* const name = interfaceName(parameter.interfaceID);
    return name ? Json(name) : Json(parameter.interfaceID);
}

Json describeParameter(const ParameterDesc& parameter) {
    return {{"name", parameter.name},
            {"type", typeOf(parameter)},
            {"list", parameter.isList()},
            {"default", defaultOf(parameter)},
            {"interface", interfaceOf(parameter)},
            {"description", textOrNull(parameter.description)},
            {"guide", textOrNull(parameter.guide)}};
}

Json describeKind(const HostSession& session, const PluginKind& kind) {
    Json parameters = Json::array();
    for (const ParameterDesc* parameter : kind.parameters)
        parameters.push_back(describeParameter(*parameter));
    return {{"name", kind.getName()},
            {"id", kind.desc->getPluginID()},
            {"interfaces", session.getInterfaceNames(kind)},
            {"parameters", parameters}};
}

/// A value as a person reads it: texts without quotes.
std::string plain(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void printText(const PluginKind& kind, const Json& info) {
    ConsoleText text;
    text.add(kind.getName(), Tone::Heading)
        .addf(", id %u, %s\nInterfaces:", kind.desc->getPluginID(),
              kind.library.empty() ? "part of this program" : kind.library.c_str());
    for (const Json& name : info["interfaces"])
        text.add(" " + name.get<std::string>());
    text.add("\n\n").add("Parameters", Tone::Heading).add("\n");
    for (const Json& parameter : info["parameters"]) {
        std::string type = plain(parameter["type"]);
        if (!parameter["interface"].is_null())
            type += " with " + plain(parameter["interface"]);
        if (parameter["list"].get<bool>())
            type = "list of " + type;
        text.add("  ").add(parameter["name"].get<std::string>(), Tone::Good).add(": " + type);
        if (!parameter["default"].is_null())
            text.add(", default " + parameter["default"].dump());
        text.add("\n");
        for (const char* key : {"description", "guide"}) {
            if (!parameter[key].is_null())
                text.add("      " + plain(parameter[key]) + "\n");
        }
    }
    print(Stream::Output, text);
}

ExitCode run(const InfoOptions& options) {
    HostSession session;
    session.loadModules(options.plugins.searchPath(), nullptr);
    const PluginKind* const kind = session.findKind(options.name);
    if (!kind) {
        const std::string text = "there is no plug-in \"" + options.name + "\"" +
                                 nearestKind(session, options.name) + session.getRejectedText();
        print(Stream::Error, complaint(text).add("\n"));
        return ExitCode::BadInput;
    }
    const Json info = describeKind(session, *kind);
    options.json ? printJson(info) : printText(*kind, info);
    return ExitCode::Done;
}

}  // namespace

void addInfoCommand(CLI::App& program, ExitCode& exitCode) {
    CLI::App* const command = program.add_subcommand(
        "info", "Explains a plug-in: its parameters with type, default, meaning and hints");
    const auto options = std::make_shared<InfoOptions>();
    command->add_option("PLUGIN", options->name, "Name of the plug-in, as pelk list shows it")
        ->required()
        ->type_name("");
    options->plugins.addTo(*command);
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

}  // namespace Tarnkit
