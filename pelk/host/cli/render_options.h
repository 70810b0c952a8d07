#pragma once

#include <string>
#include <vector>

#include "pelk/host/cli/common_options.h"
#include "pelk/host/cli/scene_command.h"

namespace Tarnkit {

/// A part of a picture that is cut into bands of rows; counts from 1.
struct TileChoice {
    int index = 1, count = 1;
};

enum class ProgressStyle { Auto, JsonLines, None };

/// What the command line of `pelk render` says. Numbers that are 0 were left out, and the scene's
/// settings hold.
struct RenderCommandOptions : SceneOptions {
    std::vector<std::string> outputs;
    PictureOptions picture;
    int threads = 0;
    PictureRect region;  ///< empty if it was left out
    TileChoice tile;
    int tileSize = RenderOptions().tileSize;
    std::vector<std::string> channels;
    ProgressStyle progress = ProgressStyle::Auto;
    bool nice = false;
    bool strict = false;

    void addTo(CLI::App& command);
};

/// The pixels of a picture that are to be rendered. False if some of them lie outside; `error`
/// then says so.
bool choosePixels(const RenderCommandOptions& options, int width, int height, PictureRect& pixels,
                  std::string& error);

}  // namespace Tarnkit
