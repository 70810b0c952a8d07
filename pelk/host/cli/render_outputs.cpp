#include "pelk/host/cli/render_outputs.h"

#include <filesystem>
#include <map>

#include "pelk/host/picture/file_envelope.h"
#include "pelk/host/picture/image_output.h"
#include "pelk/host/render/scene_files.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"
#include "pelk/platform/output_file.h"

namespace Tarnkit {

namespace {

/// One text for all names that lead to one file, which need not be there yet.
std::string placeOf(const std::string& name) {
    const std::string full = platform::fullPath(name);
    std::error_code error;
    const auto place = std::filesystem::weakly_canonical(platform::nativePath(full), error);
    return error ? full : place.string();
}

}  // namespace

OutputCheck checkDistinct(const std::vector<std::string>& outputs) {
    std::map<std::string, std::string> nameOf;
    for (const std::string& name : outputs) {
        const auto [other, isNew] = nameOf.try_emplace(placeOf(name), name);
        if (!isNew)
            return OutputFault{ExitCode::BadUsage, "the outputs \"" + other->second + "\" and \"" +
                                                       name + "\" are one file"};
    }
    return {};
}

RenderOutputs::RenderOutputs(RenderCommandOptions& commandOptions) : options(commandOptions) {
    std::vector<std::string>& outputs = commandOptions.outputs;
    if (outputs.empty() && !platform::isOpenStream(options.file))
        outputs.push_back(std::filesystem::path(options.file).stem().string() + ".png");
}

bool RenderOutputs::keepsCheckpoint() const {
    return options.resume || options.checkpointSeconds > 0.0 || !options.checkpointFile.empty();
}

OutputFiles RenderOutputs::filesOf(std::optional<int> frame) const {
    const auto nameOf = [&](const std::string& pattern) {
        return frame ? frameName(pattern, *frame) : pattern;
    };
    OutputFiles files;
    for (const std::string& pattern : options.outputs)
        files.outputs.push_back(nameOf(pattern));
    if (keepsCheckpoint())
        files.checkpoint = options.checkpointFile.empty() ? files.outputs.front() + ".pkc"
                                                          : nameOf(options.checkpointFile);
    return files;
}

OutputCheck RenderOutputs::check() const {
    if (options.outputs.empty())
        return OutputFault{ExitCode::BadUsage,
                           "expected --output: a scene that is read from a stream has no name"};
    if (!options.frames)
        return checkFiles(filesOf({}));
    std::vector<std::string> patterns = options.outputs;
    if (!options.checkpointFile.empty())
        patterns.push_back(options.checkpointFile);
    const std::string clash = equalFrameNames(patterns, *options.frames);
    if (!clash.empty())
        return OutputFault{ExitCode::BadUsage, clash};
    for (const int frame : framesOf(*options.frames)) {
        if (OutputCheck fault = checkFiles(filesOf(frame)))
            return fault;
    }
    return {};
}

OutputCheck RenderOutputs::checkFiles(const OutputFiles& files) const {
    std::string error;
    for (const std::string& output : files.outputs) {
        if (!canWritePicture(output, error))
            return OutputFault{
                hasPictureEnding(output) ? ExitCode::OutputFailed : ExitCode::BadUsage, error};
    }
    std::vector<std::string> all = files.outputs;
    if (options.log.debugLog)
        all.push_back(debugLogPath(*options.log.debugLog));
    if (OutputCheck fault = checkDistinct(all))
        return fault;
    return keepsCheckpoint() ? checkCheckpoint(files) : OutputCheck();
}

/// What stands in the place of a checkpoint must be one: whatever else it is would be lost.
OutputCheck RenderOutputs::checkCheckpoint(const OutputFiles& files) const {
    const std::string& file = files.checkpoint;
    for (const std::string& output : files.outputs) {
        if (placeOf(output) == placeOf(file))
            return OutputFault{ExitCode::BadUsage, "--checkpoint-file: \"" + file +
                                                       "\" is one of the pictures to write"};
    }
    const platform::OutputFile checkpoint(file);
    if (!checkpoint.getError().empty())
        return OutputFault{ExitCode::OutputFailed,
                           "checkpoint \"" + file + "\": " + checkpoint.getError()};
    if (std::error_code none; !std::filesystem::exists(platform::nativePath(file), none))
        return {};
    EnvelopeReader former(file);
    if (former.readHeader(FileKind::Checkpoint))
        return {};
    return OutputFault{former.isSystemFault() ? ExitCode::SystemFailed : ExitCode::BadInput,
                       "checkpoint: " + former.getError()};
}

OutputCheck RenderOutputs::checkInputs(const OutputFiles& files, const Scene& scene) {
    std::vector<std::string> outputs = files.outputs;
    if (!files.checkpoint.empty())
        outputs.push_back(files.checkpoint);
    for (const std::string& input : inputFilesOf(scene)) {
        for (const std::string& output : outputs) {
            if (platform::isSameFile(output, input))
                return OutputFault{ExitCode::BadUsage, "the output \"" + output +
                                                           "\" would replace \"" + input +
                                                           "\", which the scene reads"};
        }
    }
    return {};
}

}  // namespace Tarnkit
