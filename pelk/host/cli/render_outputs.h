#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pelk/host/cli/render_options.h"

namespace Tarnkit {

/// What one picture is written to.
struct OutputFiles {
    std::vector<std::string> outputs;  ///< pictures and region files, at least one
    std::string checkpoint;            ///< empty if none is kept
};

/// Why a command can't do what its files are named for: what it ends with, and a line about it.
struct OutputFault {
    ExitCode code;
    std::string text;
};
using OutputCheck = std::optional<OutputFault>;  ///< none if all is well

/// Two names of one list that lead to the same file, be it by another spelling or by symbolic
/// links: the second picture would take the place of the first.
OutputCheck checkDistinct(const std::vector<std::string>& outputs);

/// The files that one run of `pelk render` writes, and what can be wrong with their names. All that
/// can be found out before a render is, so that hours of work don't end without a picture.
class RenderOutputs {
public:
    /// Gives `options` the name of the picture if the command line has none. Keeps them: they must
    /// outlive this.
    explicit RenderOutputs(RenderCommandOptions& options);

    /// The files of a frame, or of the one picture that is rendered without frames.
    OutputFiles filesOf(std::optional<int> frame) const;
    bool keepsCheckpoint() const;

    /// Whether every file of every frame can be written, and each is one alone. Tries it by
    /// temporary files, which a signal must not leave behind.
    OutputCheck check() const;
    /// Whether nothing that the scene is made from would be replaced, by whatever name.
    static OutputCheck checkInputs(const OutputFiles& files, const Scene& scene);

private:
    OutputCheck checkFiles(const OutputFiles& files) const;
    OutputCheck checkCheckpoint(const OutputFiles& files) const;

    const RenderCommandOptions& options;
};

}  // namespace Tarnkit
