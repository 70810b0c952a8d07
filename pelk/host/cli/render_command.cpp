#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/interrupt.h"
#include "pelk/host/cli/json_output.h"
#include "pelk/host/cli/progress.h"
#include "pelk/host/cli/render_outputs.h"
#include "pelk/host/picture/image_output.h"
#include "pelk/host/picture/region_file.h"
#include "pelk/host/render/checkpoint.h"
#include "pelk/host/render/fingerprint.h"
#include "pelk/host/render/render_workers.h"
#include "pelk/platform/console.h"
#include "pelk/platform/file.h"

namespace Tarnkit {

namespace {

ExitCode failureCode(const RenderResult& result) {
    return result.systemFailed ? ExitCode::SystemFailed : ExitCode::BadInput;
}

/// What a pixel gets at most under --noise without --spp: one that never ends its noise, such as
/// one that a caustic hits once in a while, must not hold up the picture for ever.
constexpr int kMostSamplesByNoise = 4096;

/// Why a picture has the samples that it has, as its metadata tell it.
const char* wordsFor(RenderEnd end) {
    constexpr const char* kWords[] = {kFinished, "interrupted", "out of time", "a plug-in faulted",
                                      "in work"};
    return kWords[static_cast<int>(end)];
}

/// "3", or "3 to 4".
std::string asText(const SampleRange& range) {
    const std::string least = std::to_string(range.least);
    return range.least == range.most ? least : least + " to " + std::to_string(range.most);
}

/// One run of `pelk render`.
class RenderRun {
public:
    explicit RenderRun(RenderCommandOptions& commandOptions)
        : options(commandOptions), outputs(commandOptions), command(commandOptions) {}

    ExitCode run();

private:
    ExitCode fail(const OutputFault& fault) { return command.fail(fault.code, fault.text); }
    ExitCode failWithoutPicture(const RenderResult& result, const InterruptGuard& interrupt);
    ExitCode runFrames(const InterruptGuard& interrupt);
    ExitCode runFrame(const InterruptGuard& interrupt);
    ExitCode checkPixels(const Scene& scene, RenderOptions& render);
    ExitCode takeFingerprint(const Scene& scene, const RenderOptions& render);
    FileHeader headerOf(const Scene& scene, const RenderOptions& render, const RenderResult& result,
                        Picture& picture) const;
    FileHeader checkpointHeader(const Scene& scene, const RenderOptions& render) const;
    RenderResult render(Scene& scene, RenderOptions render, const std::atomic<bool>& stop,
                        Picture& picture);
    void rescue(const Scene& scene, const RenderOptions& render, const RenderResult& result,
                Picture& picture);
    ExitCode write(const Scene& scene, const RenderOptions& render, const RenderResult& result,
                   Picture& picture);
    ExitCode report(const RenderResult& result, ExitCode code);

    const RenderCommandOptions& options;
    const RenderOutputs outputs;
    SceneCommand command;
    ContentDigest fingerprint;         ///< if there are region files to write
    OutputFiles files;                 ///< of the frame in work
    std::optional<int> frame;          ///< its number, if there are several
    std::vector<std::string> written;  ///< full names of its pictures
};

ExitCode RenderRun::run() {
    if (!command.openLog())
        return ExitCode::BadInput;
    {
        // Outputs are tried by making a temporary file, which a signal must not leave behind.
        const InterruptGuard trying;
        if (const OutputCheck fault = outputs.check())
            return fail(*fault);
        if (trying.wasRequested())
            return trying.getExitCode();
    }
    if (const ExitCode code = command.openScene(); code != ExitCode::Done)
        return code;
    const InterruptGuard interrupt;  // until the pictures are written
    if (options.frames)
        return runFrames(interrupt);
    files = outputs.filesOf({});
    return runFrame(interrupt);
}

/// Renders frame after frame of the scene that has been read, up to the first that fails.
ExitCode RenderRun::runFrames(const InterruptGuard& interrupt) {
    SceneSettings& settings = command.getScene().settings;
    for (const int number : framesOf(*options.frames)) {
        frame = number;
        settings.time = number / settings.fps;
        files = outputs.filesOf(number);
        written.clear();
        if (const ExitCode code = runFrame(interrupt); code != ExitCode::Done)
            return command.fail(code, "the frames end here, at frame " + std::to_string(number));
    }
    return ExitCode::Done;
}

ExitCode RenderRun::runFrame(const InterruptGuard& interrupt) {
    Scene& scene = command.getScene();
    if (const OutputCheck fault = RenderOutputs::checkInputs(files, scene))
        return fail(*fault);
    RenderOptions renderOptions;
    if (const ExitCode code = checkPixels(scene, renderOptions); code != ExitCode::Done)
        return code;
    if (const ExitCode code = takeFingerprint(scene, renderOptions); code != ExitCode::Done)
        return code;

    Picture picture;
    const RenderResult result = render(scene, renderOptions, interrupt.wasRequested(), picture);
    if (!result.ok)
        return command.fail(failureCode(result), options.file + ": " + result.error);
    if (result.samplesOfPixels.least == 0)
        return failWithoutPicture(result, interrupt);
    ExitCode code = report(result, write(scene, renderOptions, result, picture));
    if (code == ExitCode::Done && !result.checkpointError.empty())
        code = ExitCode::OutputFailed;
    // Asked to stop during the writing, the run tells its caller so, though the pictures are whole.
    return code == ExitCode::Done && interrupt.wasRequested() ? interrupt.getExitCode() : code;
}

/// A render ended before its first pass was over: older pictures stand.
ExitCode RenderRun::failWithoutPicture(const RenderResult& result,
                                       const InterruptGuard& interrupt) {
    std::string rest = " before every pixel had a sample; no picture written";
    if (outputs.keepsCheckpoint() && result.checkpointError.empty() && result.samples > 0)
        rest += ", \"" + files.checkpoint + "\" has what there is";
    if (result.end == RenderEnd::Stopped)
        return command.fail(interrupt.getExitCode(), "interrupted" + rest);
    return command.fail(ExitCode::BadInput, "--time: the time was over" + rest);
}

ExitCode RenderRun::checkPixels(const Scene& scene, RenderOptions& render) {
    render = options.picture.forRender(scene.settings);
    render.threads = options.threads;
    render.tileSize = options.tileSize;
    render.order = options.order;
    render.seconds = options.seconds;
    render.noise = options.noise;
    if (options.noise > 0.0 && options.picture.samples == 0)
        render.samples = kMostSamplesByNoise;
    render.channels = options.channels;
    render.noiseSeed = options.seed.value_or(render.noiseSeed);
    if (frame)
        render.noiseSeed = frameNoise(render.noiseSeed, *frame);
    std::string error;
    if (!choosePixels(options, render.width, render.height, render.region, error))
        return command.fail(ExitCode::BadUsage, error);
    return ExitCode::Done;
}

/// Costs a read of all files of the scene, so it is not done for nothing.
ExitCode RenderRun::takeFingerprint(const Scene& scene, const RenderOptions& render) {
    if (!outputs.keepsCheckpoint() &&
        std::none_of(files.outputs.begin(), files.outputs.end(), isRegionFile))
        return ExitCode::Done;
    const Fingerprint taken = fingerprintOf(scene, render, PELK_VERSION);
    fingerprint = taken.digest;
    if (taken.error.empty())
        return ExitCode::Done;
    return command.fail(taken.systemFault ? ExitCode::SystemFailed : ExitCode::BadInput,
                        options.file + ": " + taken.error);
}

RenderResult RenderRun::render(Scene& scene, RenderOptions render, const std::atomic<bool>& stop,
                               Picture& picture) {
    TerminalProgress terminalProgress(command.getStatus());
    JsonProgress jsonProgress(frame);
    RenderProgress* progress = nullptr;
    if (options.progress == ProgressStyle::JsonLines)
        progress = &jsonProgress;
    else if (options.progress == ProgressStyle::Auto && command.getStatus().isTerminal())
        progress = &terminalProgress;
    const OwnedThreadManager manager(newThreadManager());
    manager->setLowPriority(options.nice);
    if (options.nice)
        command.getLog().info("At a priority below normal");
    render.manager = manager.get();
    const CheckpointOptions checkpoint{.file = files.checkpoint,
                                       .seconds = options.checkpointSeconds,
                                       .resume = options.resume,
                                       .inBlocks = options.noise > 0.0,
                                       .header = checkpointHeader(scene, render)};
    render.interimSeconds = options.interimSeconds;
    render.interim = [&](Picture& shown, const RenderResult& soFar) {
        write(scene, render, soFar, shown);
        written.clear();
    };
    render.rescue = [&](Picture& shown, const RenderResult& soFar) {
        rescue(scene, render, soFar, shown);
    };
    if (outputs.keepsCheckpoint())
        render.checkpoint = &checkpoint;
    const RenderResult result =
        renderScene(scene, render, &command.getLog(), progress, stop, picture);
    command.getStatus().show({});
    return result;
}

/// Runs on a thread of its own while the one that renders is stopped or stands still.
void RenderRun::rescue(const Scene& scene, const RenderOptions& render, const RenderResult& result,
                       Picture& picture) {
    if (result.samplesOfPixels.least == 0) {
        command.getLog().complain("not every pixel had a sample; no picture written");
        return;
    }
    written.clear();
    report(result, write(scene, render, result, picture));
    std::string error;
    platform::finishStandardOutput(error);
}

FileHeader RenderRun::headerOf(const Scene& scene, const RenderOptions& render,
                               const RenderResult& result, Picture& picture) const {
    const bool isTile = options.region.isEmpty() && options.tile.count > 1;
    const FilePart part{.rect = render.region,
                        .tile = isTile ? options.tile.index : 0,
                        .tiles = isTile ? options.tile.count : 0,
                        .seconds = result.seconds,
                        .computer = picture.getRegion().getHostName()};
    return {.fingerprint = fingerprint,
            .width = render.width,
            .height = render.height,
            .rect = render.region,
            .samplesAsked = render.samples,
            .samplesLeast = static_cast<int>(result.samplesOfPixels.least),
            .samplesMost = static_cast<int>(result.samplesOfPixels.most),
            .halfFloat = scene.settings.halfFloat,
            .scene = options.file,
            .program = "pelk",
            .version = PELK_VERSION,
            .ended = wordsFor(result.end),
            .channels = fileChannelsOf(picture),
            .parts = {part}};
}

FileHeader RenderRun::checkpointHeader(const Scene& scene, const RenderOptions& render) const {
    FileHeader header;
    header.fingerprint = fingerprint;
    header.width = render.width;
    header.height = render.height;
    header.samplesAsked = render.samples;
    header.halfFloat = scene.settings.halfFloat;
    header.scene = options.file;
    header.program = "pelk";
    header.version = PELK_VERSION;
    return header;
}

/// Writes every picture that can be written; one that can't does not spoil the others.
ExitCode RenderRun::write(const Scene& scene, const RenderOptions& render,
                          const RenderResult& result, Picture& picture) {
    const PictureInfo info{.scene = options.file,
                           .samples = render.samples,
                           .samplesLeast = static_cast<int>(result.samplesOfPixels.least),
                           .samplesMost = static_cast<int>(result.samplesOfPixels.most),
                           .ended = wordsFor(result.end),
                           .seconds = result.seconds,
                           .host = "pelk",
                           .version = PELK_VERSION,
                           .rect = render.region};
    const FileHeader header = headerOf(scene, render, result, picture);
    ExitCode code = ExitCode::Done;
    for (const std::string& output : files.outputs) {
        // A part of a picture is of no use to a merge before it is done.
        if (result.end == RenderEnd::InWork && isRegionFile(output))
            continue;
        std::string error;
        if (!writeOutput(picture, output, header, info, error))
            code = command.fail(ExitCode::OutputFailed, error);
        else
            written.push_back(platform::fullPath(output));
    }
    return code;
}

/// The last words, and what the whole run comes to.
ExitCode RenderRun::report(const RenderResult& result, ExitCode code) {
    if (options.progress == ProgressStyle::JsonLines) {
        Json event{{"event", "finished"},
                   {"pictures", written},
                   {"samples", result.samples},
                   {"seconds", result.seconds},
                   {"dropped_samples", result.droppedSamples},
                   {"thrown_samples", result.thrownSamples},
                   {"least_samples", result.samplesOfPixels.least},
                   {"most_samples", result.samplesOfPixels.most},
                   {"interrupted", result.end == RenderEnd::Stopped},
                   {"out_of_time", result.end == RenderEnd::OutOfTime},
                   {"faulted", result.end == RenderEnd::Faulted}};
        if (frame)
            event["frame"] = *frame;
        printJson(event, -1);
    } else {
        for (const std::string& file : written)
            print(Stream::Output, ConsoleText().add("Wrote", Tone::Good).add(" " + file + "\n"));
        if (command.getStatus().isTerminal())
            command.getStatus().print(
                shortNumber(static_cast<double>(result.samples)) + " samples in " +
                clockTime(result.seconds) + ", " +
                shortNumber(static_cast<double>(result.samples) / std::max(result.seconds, 1e-9)) +
                " a second");
    }
    if (result.droppedSamples > 0)
        command.getLog().warning(
            "%lld samples were left out, since a colour or a ray of theirs was not finite; %s",
            result.droppedSamples,
            result.droppedBy.empty() ? "the light itself or the background was"
                                     : ("\"" + result.droppedBy + "\" made one of them").c_str());
    if (result.thrownSamples > 0)
        command.getLog().warning(
            "%lld samples were left out, since a plug-in threw; one of them: %s",
            result.thrownSamples, result.thrownBy.c_str());
    const std::string samples =
        "the picture has " + asText(result.samplesOfPixels) + " samples in each pixel";
    if (result.end == RenderEnd::Stopped)
        command.getLog().complain("interrupted; " + samples);
    else if (result.end == RenderEnd::OutOfTime)
        command.getLog().info("The time is over; %s", samples.c_str());
    if (code != ExitCode::Done)
        return code;
    return options.strict && result.droppedSamples + result.thrownSamples > 0
               ? ExitCode::PictureHasErrors
               : ExitCode::Done;
}

}  // namespace

void addRenderCommand(CLI::App& program, ExitCode& exitCode) {
    CLI::App* const command =
        program.add_subcommand("render", "Renders a scene into one or more picture files");
    const auto options = std::make_shared<RenderCommandOptions>();
    options->addTo(*command);
    command->callback([options, &exitCode] { exitCode = RenderRun(*options).run(); });
}

}  // namespace Tarnkit
