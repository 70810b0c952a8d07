#include "pelk/render_options.h"

#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <map>
#include <string_view>

namespace Tarnkit {

namespace {

constexpr int kMaxSide = 65536;
constexpr long long kMaxPixels = 1 << 28;
constexpr int kMaxSamples = 1 << 24;
constexpr int kMaxThreads = 1024;

/// Numbers from 0 on with separators between them and nothing else. False if `text` is no such.
template <size_t N>
bool parseNumbers(std::string_view text, char separator, std::array<int, N>& numbers) {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (size_t i = 0; i < N; ++i) {
        if (i > 0 && (at == end || *at++ != separator))
            return false;
        const auto [next, fault] = std::from_chars(at, end, numbers[i]);
        if (fault != std::errc() || numbers[i] < 0)
            return false;
        at = next;
    }
    return at == end;
}

[[noreturn]] void refuse(const char* option, const std::string& text, const std::string& expected) {
    throw CLI::ValidationError(option, "expected " + expected + ", got \"" + text + "\"");
}

void parseSize(const std::string& text, RenderCommandOptions& options) {
    std::array<int, 2> size{};
    if (!parseNumbers(text, 'x', size) || size[0] < 1 || size[1] < 1 || size[0] > kMaxSide ||
        size[1] > kMaxSide || (long long)size[0] * size[1] > kMaxPixels)
        refuse("--size", text, "WIDTHxHEIGHT, such as 640x480, at most 65536 each way");
    options.width = size[0];
    options.height = size[1];
}

void parseRegion(const std::string& text, RenderCommandOptions& options) {
    std::array<int, 4> corners{};
    if (parseNumbers(text, ',', corners))
        options.region = {corners[0], corners[1], corners[2], corners[3]};
    if (options.region.isEmpty())
        refuse("--region", text,
               "X0,Y0,X1,Y1 in pixels from the upper left corner, X1 and Y1 outside");
}

void parseTile(const std::string& text, RenderCommandOptions& options) {
    std::array<int, 2> tile{};
    if (!parseNumbers(text, '/', tile) || tile[0] < 1 || tile[0] > tile[1])
        refuse("--tile", text, "I/N, from 1/N to N/N");
    options.tile = {tile[0], tile[1]};
}

std::string checkOverride(const std::string& text) {
    const size_t equals = text.find('='), dot = text.find('.');
    const bool good =
        equals != std::string::npos && dot != std::string::npos && dot > 0 && dot + 1 < equals;
    return good ? "" : "expected INSTANCE.PARAM=VALUE, got \"" + text + "\"";
}

/// Lets whole numbers from 1 on pass, and leaves the help text alone.
CLI::Validator numbersTo(int largest) {
    return CLI::Range(1, largest).description("");
}

/// An option whose text goes through a function of the form of parseSize.
template <class Parse>
CLI::Option* addParsed(CLI::App& command, const char* name, const char* form, const char* help,
                       RenderCommandOptions& options, Parse parse) {
    return command
        .add_option_function<std::string>(
            name, [parse, &options](const std::string& text) { parse(text, options); }, help)
        ->type_name(form);
}

void addPictureOptions(CLI::App& command, RenderCommandOptions& options) {
    command
        .add_option("-o,--output", options.outputs,
                    "Picture to write, .exr or .png; repeatable. Without it, the scene's name "
                    "with .png, in the working directory")
        ->type_name("FILE")
        ->allow_extra_args(false);
    addParsed(command, "--size", "WxH", "Size of the picture in pixels", options, parseSize);
    command.add_option("--spp", options.samples, "Samples per pixel")
        ->type_name("N")
        ->check(numbersTo(kMaxSamples));
    CLI::Option* const region =
        addParsed(command, "--region", "X0,Y0,X1,Y1",
                  "Render these pixels alone; X1 and Y1 lie outside", options, parseRegion);
    addParsed(command, "--tile", "I/N", "Render the band I of N, from 1/N at the top to N/N",
              options, parseTile)
        ->excludes(region);
    command
        .add_option("--channels", options.channels,
                    "Render channels for EXR files, beside those that the scene asks for; \"all\" "
                    "stands for every one that is known")
        ->type_name("A,B")
        ->delimiter(',')
        ->allow_extra_args(false);
}

}  // namespace

void RenderCommandOptions::addTo(CLI::App& command) {
    command.add_option("SCENE", scene, "Scene file")->required()->type_name("");
    addPictureOptions(command, *this);
    command.add_option("--threads", threads, "Threads to render on; otherwise all processors")
        ->type_name("N")
        ->check(numbersTo(kMaxThreads));
    command
        .add_option("--tile-size", tileSize,
                    "Pixels on a side of what a thread renders at a time; the picture is the same")
        ->type_name("N")
        ->check(numbersTo(kMaxTileSize))
        ->capture_default_str();
    command
        .add_option("--set", overrides,
                    "Set a parameter of the scene, VALUE as in the scene file; repeatable")
        ->type_name("INSTANCE.PARAM=VALUE")
        ->check(CLI::Validator(checkOverride, ""))
        ->allow_extra_args(false);
    const std::map<std::string, ProgressStyle> styles{{"auto", ProgressStyle::Auto},
                                                      {"json", ProgressStyle::JsonLines},
                                                      {"none", ProgressStyle::None}};
    command
        .add_option("--progress", progress,
                    "auto: on standard error, if that is a terminal; json: lines of JSON on "
                    "standard output; none")
        ->type_name("auto|json|none")
        ->transform(CLI::Transformer(styles).description(""))
        ->check(CLI::CheckedTransformer(styles).description(""));
    command.add_flag("--strict", strict,
                     "Exit with 4 if colours that are not finite had to be left out");
    command.add_flag("-v,--verbose", verbose, "Tell more, on standard error");
    plugins.addTo(command);
}

bool choosePixels(const RenderCommandOptions& options, int width, int height, PictureRect& pixels,
                  std::string& error) {
    const auto [index, count] = options.tile;
    const std::string size =
        "; the picture has " + std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (count > height) {
        error = "--tile: there are fewer than " + std::to_string(count) + " rows" + size;
        return false;
    }
    const auto edge = [height, n = count](int i) { return int((long long)height * i / n); };
    pixels = {0, edge(index - 1), width, edge(index)};
    if (options.region.isEmpty())
        return true;
    pixels = options.region;
    if (pixels.x1 > width || pixels.y1 > height) {
        error = "--region lies outside" + size;
        return false;
    }
    return true;
}

}  // namespace Tarnkit
