#pragma once

#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/host/render/render_job.h"

namespace CLI {
class App;
}

namespace Tarnkit {

struct SceneSettings;

// Options that several commands share.

/// How large a picture is to be and how many samples a pixel gets. 0 was left out, and the scene's
/// settings hold.
struct PictureOptions {
    int width = 0, height = 0;
    int samples = 0;  ///< per pixel

    /// Adds `--size WxH` and `--spp N`.
    void addTo(CLI::App& command);
    /// Size and samples for a render of a scene with these settings; all else is as by default.
    RenderOptions forRender(const SceneSettings& settings) const;
};

/// `--set INSTANCE.PARAM=VALUE`, repeatable
void addSetOption(CLI::App& command, std::vector<std::string>& overrides);

/// Ends the reading of the command line by the exception that its parser takes for a wrong option.
/// The user reads what `expected` says and the option's `text`.
[[noreturn]] void refuse(const char* option, const std::string& text, const std::string& expected);

/// Reads N numbers from 0 on with separators between them and nothing else, as in "640x480". False
/// if `text` is not of that form; `numbers` may then be written in part.
template <std::size_t N>
bool parseNumbers(std::string_view text, char separator, std::array<int, N>& numbers) {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0 && (at == end || *at++ != separator))
            return false;
        const auto [next, fault] = std::from_chars(at, end, numbers[i]);
        if (fault != std::errc() || numbers[i] < 0)
            return false;
        at = next;
    }
    return at == end;
}

}  // namespace Tarnkit
