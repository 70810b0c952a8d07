#include "pelk/host/cli/render_options.h"

#include <CLI/CLI.hpp>
#include <array>
#include <map>

#include "pelk/contract/channel_alias.h"
#include "pelk/host/cli/common_options.h"

namespace Tarnkit {

namespace {

constexpr char kEnvironment[] =
    "\nEnvironment:\n"
    "  PELK_NUM_THREADS          Threads to render on, if --threads does not say\n"
    "  PELK_USE_THREAD_AFFINITY  0: do not bind threads to the nodes of a machine that has "
    "several\n"
    "  NO_COLOR                  Not empty: no colours on the terminal\n"
    "Ctrl-C, SIGTERM and SIGHUP end a render and write the picture with the samples that it has;\n"
    "where some pixels have none, an older picture stands. A second one gives up at once.";

/// The render channels that can be asked for by name, a line each.
std::string channelHelp() {
    constexpr std::size_t kColumn = 22;
    std::string text = "\nRender channels:\n";
    for (const ChannelAliasInfo& info : namedChannelAliases().subspan(kFirstExtraChannel)) {
        std::string line = std::string("  ") + info.name;
        line.resize(kColumn, ' ');
        text += line + info.meaning + '\n';
    }
    return text;
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

void parseFrames(const std::string& text, RenderCommandOptions& options) {
    FrameRange range;
    if (!parseFrameRange(text, range))
        refuse("--frames", text,
               "A-B, A or A-BxSTEP, such as 1-10, 7 or 1-100x5, at most " +
                   std::to_string(kMaxFrames) + " frames");
    options.frames = range;
}

void parseOrder(const std::string& text, RenderCommandOptions& options) {
    if (text == "passes")
        options.order = SampleOrder::Passes;
    else if (text == "tiles")
        options.order = SampleOrder::Tiles;
    else
        refuse("--order", text, "passes or tiles");
}

void parseProgress(const std::string& text, RenderCommandOptions& options) {
    const std::map<std::string, ProgressStyle> styles{{"auto", ProgressStyle::Auto},
                                                      {"json", ProgressStyle::JsonLines},
                                                      {"none", ProgressStyle::None}};
    const auto style = styles.find(text);
    if (style == styles.end())
        refuse("--progress", text, "auto, json or none");
    options.progress = style->second;
}

/// Lets whole numbers from 1 on pass, and leaves the help text alone.
CLI::Validator numbersTo(int largest) {
    return CLI::Range(1, largest).description("");
}

/// An option whose text goes through a function of the form of parseRegion.
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
                    "Picture to write, .exr or .png, or .pkr for pelk merge; repeatable. "
                    "Without it, the scene's name with .png, in the working directory")
        ->type_name("FILE")
        ->allow_extra_args(false);
    options.picture.addTo(command);
    addParsed(command, "--frames", "A-B[xSTEP]",
              "Render these frames one after the other, frame N at the time N / fps of the "
              "settings. Its number takes the place of <frame04>, %04d or #### in the names of "
              "pictures, or goes before the extension",
              options, parseFrames);
    command
        .add_option("--seed", options.seed,
                    "Another pattern of noise for each number, in the place of the seed of the "
                    "settings; every frame has its own anyway")
        ->type_name("N");
    CLI::Option* const region =
        addParsed(command, "--region", "X0,Y0,X1,Y1",
                  "Render these pixels alone; X1 and Y1 lie outside", options, parseRegion);
    addParsed(command, "--tile", "I/N", "Render the band I of N, from 1/N at the top to N/N",
              options, parseTile)
        ->excludes(region);
    command
        .add_option("--channels", options.channels,
                    "Render channels for EXR files, beside those that the scene asks for, by the "
                    "names below; \"all\" stands for every one of them")
        ->type_name("A,B")
        ->delimiter(',')
        ->allow_extra_args(false);
}

}  // namespace

void RenderCommandOptions::addTo(CLI::App& command) {
    addFileTo(command);
    addPictureOptions(command, *this);
    command
        .add_option("--threads", threads,
                    "Threads to render on; otherwise PELK_NUM_THREADS, or one for each processor")
        ->type_name("N")
        ->check(numbersTo(kMaxThreads));
    command
        .add_option("--tile-size", tileSize,
                    "Pixels on a side of what a thread renders at a time; the picture is the same")
        ->type_name("N")
        ->check(numbersTo(kMaxTileSize))
        ->capture_default_str();
    const CLI::Validator kDuration = CLI::Range(0.001, 1e9).description("");
    command
        .add_option("--time", seconds,
                    "Ends so many seconds after the first sample, with the samples done by then")
        ->type_name("SECONDS")
        ->check(kDuration);
    command
        .add_option(
            "--noise", noise,
            "Ends where the noise, relative to the mean, is below this, such as 0.02; --spp "
            "is the most then, 4096 without it")
        ->type_name("LEVEL")
        ->check(CLI::Range(1e-6, 1e3).description(""));
    command
        .add_option("--checkpoint", checkpointSeconds,
                    "Keeps what is done, so often and at the end, for --resume to go on with")
        ->type_name("SECONDS")
        ->check(kDuration);
    command
        .add_option("--checkpoint-file", checkpointFile,
                    "Where; otherwise the first picture's name with .pkc behind it")
        ->type_name("FILE");
    command.add_flag("--resume", resume,
                     "Goes on with what a checkpoint has, if there is one: after an interruption, "
                     "or with a larger --spp");
    command
        .add_option(
            "--interim", interimSeconds,
            "Writes the pictures so often while they are rendered in passes, with the tiles "
            "in work shaded")
        ->type_name("SECONDS")
        ->check(kDuration);
    addParsed(
        command, "--order", "passes|tiles",
        "passes: a few samples for the whole picture, then more; tiles: all samples of a tile "
        "at once, which takes less memory; the picture is the same. By default passes, if "
        "they fit into memory",
        *this, parseOrder);
    command.add_flag("--nice", nice, "Render at a priority below normal, behind other programs");
    addSetOption(command, overrides);
    addParsed(command, "--progress", "auto|json|none",
              "auto: on standard error, if that is a terminal; json: lines of JSON on standard "
              "output; none",
              *this, parseProgress);
    command.add_flag("--strict", strict,
                     "Exit with 4 if samples had to be left out: a colour was not finite, or a "
                     "plug-in threw");
    log.addTo(command);
    addConfineTo(command);
    plugins.addTo(command);
    command.footer(channelHelp() + kEnvironment);
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
    const auto edge = [height, n = count](int i) {
        return static_cast<int>(static_cast<long long>(height) * i / n);
    };
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
