#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "pelk/host/cli/commands.h"
#include "pelk/host/cli/console_log.h"
#include "pelk/host/cli/diagnostics.h"
#include "pelk/host/cli/interrupt.h"
#include "pelk/host/cli/render_outputs.h"
#include "pelk/host/picture/image_output.h"
#include "pelk/host/picture/region_file.h"
#include "pelk/host/render/merge_job.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"

namespace Tarnkit {

namespace {

constexpr char kFooter[] =
    "\nParts of a picture, rendered by any number of machines, and the picture:\n"
    "  pelk render SCENE --tile 1/2 -o 1.pkr\n"
    "  pelk render SCENE --tile 2/2 -o 2.pkr\n"
    "  pelk merge 1.pkr 2.pkr -o picture.exr\n"
    "With --allow-missing, lines on standard output tell what to render again, for --tile or\n"
    "--region: \"Missing tiles 3,5-7 of 16\", or \"Missing region 0,4,10,8\" for each rectangle.";

/// What the command line of `pelk merge` says.
struct MergeCommandOptions {
    MergeOptions merge;
    std::vector<std::string> outputs;  ///< picture and region files, one each

    void addTo(CLI::App& command);
};

void MergeCommandOptions::addTo(CLI::App& command) {
    command.add_option("REGION", merge.files, "Region files that pelk render or pelk merge wrote")
        ->required()
        ->type_name("");
    command
        .add_option("-o,--output", outputs,
                    "Picture to write, .exr or .png, or one larger region, .pkr; repeatable")
        ->required()
        ->type_name("FILE")
        ->allow_extra_args(false);
    command.add_flag("--allow-missing", merge.allowMissing,
                     "Write what is there if parts of the picture are missing, and tell which");
    command.add_flag("--allow-uneven", merge.allowUneven,
                     "Merge pixels with unequal numbers of samples, as --noise leaves them");
    command.add_flag("--host-stamp", merge.hostStamp,
                     "Show which computer rendered what: as the layer host_stamp in .exr, in the "
                     "place of the picture in .png; a .pkr has the names in its header anyway");
    command.footer(kFooter);
}

/// One run of `pelk merge`.
class MergeRun {
public:
    explicit MergeRun(MergeCommandOptions& commandOptions) : options(commandOptions) {}

    ExitCode run();

private:
    ExitCode fail(ExitCode code, const std::string& text) const;
    ExitCode checkOutputs();
    ExitCode write(const MergeResult& result, Picture& picture) const;

    MergeCommandOptions& options;
    const Diagnostics diagnostics;  // keeps what is for developers from standard error
};

ExitCode MergeRun::fail(ExitCode code, const std::string& text) const {
    print(Stream::Error, complaint(text).add("\n"));
    return code;
}

ExitCode MergeRun::run() {
    // From the first temporary file, by which outputs are tried, until the pictures are written.
    const InterruptGuard interrupt;
    if (const ExitCode code = checkOutputs(); code != ExitCode::Done)
        return code;
    Picture picture;
    const MergeResult result = mergeRegions(options.merge, interrupt.wasRequested(), picture);
    if (result.stopped)
        return fail(interrupt.getExitCode(), "interrupted; nothing written");
    if (!result.ok)
        return fail(result.systemFault ? ExitCode::SystemFailed : ExitCode::BadInput, result.error);
    const ExitCode code = write(result, picture);
    for (const std::string& missing : result.missingTexts())
        print(Stream::Output, "Missing " + missing + "\n");
    return code == ExitCode::Done && interrupt.wasRequested() ? interrupt.getExitCode() : code;
}

/// Finds out before the merge what could go wrong after it.
ExitCode MergeRun::checkOutputs() {
    std::string error;
    for (const std::string& output : options.outputs) {
        for (const std::string& input : options.merge.files) {
            // By what the names lead to: one file may have several.
            if (platform::isSameFile(output, input))
                return fail(ExitCode::BadUsage,
                            "\"" + output + "\" is one of the files that are merged");
        }
        if (!canWritePicture(output, error))
            return fail(hasPictureEnding(output) ? ExitCode::OutputFailed : ExitCode::BadUsage,
                        error);
        options.merge.rectangular |= isRegionFile(output);
    }
    if (const OutputCheck fault = checkDistinct(options.outputs))
        return fail(fault->code, fault->text);
    return ExitCode::Done;
}

/// Writes every picture that can be written; one that can't does not spoil the others.
ExitCode MergeRun::write(const MergeResult& result, Picture& picture) const {
    const FileHeader& header = result.header;
    PictureInfo info{.scene = header.scene,
                     .samples = header.samplesAsked,
                     .samplesLeast = header.samplesLeast,
                     .samplesMost = header.samplesMost,
                     .ended = header.ended,
                     .seconds = header.seconds(),
                     .host = header.program,
                     .version = header.version,
                     .rect = header.rect};
    if (options.merge.hostStamp)
        info.pngChannel = picture.getRegion().findChannelByAlias(kAliasHostStamp);
    ExitCode code = ExitCode::Done;
    for (const std::string& output : options.outputs) {
        std::string error;
        if (!writeOutput(picture, output, header, info, error))
            code = fail(ExitCode::OutputFailed, error);
        else
            print(Stream::Output, ConsoleText()
                                      .add("Wrote", Tone::Good)
                                      .add(" " + platform::fullPath(output) + "\n"));
    }
    return code;
}

}  // namespace

void addMergeCommand(CLI::App& program, ExitCode& exitCode) {
    CLI::App* const command = program.add_subcommand(
        "merge", "Puts regions that were rendered apart together into one picture");
    const auto options = std::make_shared<MergeCommandOptions>();
    options->addTo(*command);
    command->callback([options, &exitCode] { exitCode = MergeRun(*options).run(); });
}

}  // namespace Tarnkit
