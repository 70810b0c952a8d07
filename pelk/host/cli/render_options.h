#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pelk/host/cli/common_options.h"
#include "pelk/host/cli/frame_range.h"
#include "pelk/host/cli/scene_command.h"

namespace Tarnkit {

/// The band `index` of `count` into which --tile cuts a picture, from top to bottom and counted
/// from 1, so that several machines can share a picture. 1 of 1 is all of it.
struct TileChoice {
    int index = 1, count = 1;
};

/// What --progress asks for: a status line if there is a terminal, lines of JSON, or nothing.
enum class ProgressStyle { Auto, JsonLines, None };

/// What the command line of `pelk render` says.
struct RenderCommandOptions : SceneOptions {
    std::vector<std::string> outputs;  ///< picture files, one each
    std::optional<FrameRange> frames;  ///< none: one picture, at the time of the settings
    std::optional<u32> seed;           ///< none: that of the settings
    PictureOptions picture;
    int threads = 0;     ///< 0 if it was left out: as many as getNumThreads() says
    PictureRect region;  ///< empty if it was left out
    TileChoice tile;
    int tileSize = RenderOptions().tileSize;
    double seconds = 0.0;  ///< --time; 0 if it was left out
    double noise = 0.0;    ///< --noise; 0 if it was left out
    /// --checkpoint and --checkpoint-file; 0 and empty if they were left out.
    double checkpointSeconds = 0.0;
    std::string checkpointFile;
    bool resume = false;
    double interimSeconds = 0.0;  ///< --interim; 0 if it was left out
    SampleOrder order = SampleOrder::Automatic;
    std::vector<std::string> channels;
    ProgressStyle progress = ProgressStyle::Auto;
    bool nice = false;
    bool strict = false;

    void addTo(CLI::App& command);
};

/// The pixels of a picture that --region or --tile chooses, all of them by default. False if some
/// of them lie outside the picture, or if it has fewer rows than bands; `error` then says so.
bool choosePixels(const RenderCommandOptions& options, int width, int height, PictureRect& pixels,
                  std::string& error);

}  // namespace Tarnkit
