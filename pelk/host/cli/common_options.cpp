#include "pelk/host/cli/common_options.h"

#include <CLI/CLI.hpp>

#include "pelk/host/scene/scene.h"

namespace Tarnkit {

namespace {

std::string checkOverride(const std::string& text) {
    const size_t equals = text.find('='), dot = text.find('.');
    const bool good =
        equals != std::string::npos && dot != std::string::npos && dot > 0 && dot + 1 < equals;
    return good ? "" : "expected INSTANCE.PARAM=VALUE, got \"" + text + "\"";
}

}  // namespace

void addSizeOption(CLI::App& command, int& width, int& height) {
    command
        .add_option_function<std::string>(
            "--size",
            [&width, &height](const std::string& text) {
                std::array<int, 2> size{};
                if (!parseNumbers(text, 'x', size) || size[0] < 1 || size[1] < 1 ||
                    size[0] > kMaxPictureSide || size[1] > kMaxPictureSide ||
                    (long long)size[0] * size[1] > kMaxPicturePixels)
                    refuse("--size", text, "WIDTHxHEIGHT, such as 640x480, at most 65536 each way");
                width = size[0];
                height = size[1];
            },
            "Size of the picture in pixels")
        ->type_name("WxH");
}

void addSamplesOption(CLI::App& command, int& samples) {
    command.add_option("--spp", samples, "Samples per pixel")
        ->type_name("N")
        ->check(CLI::Range(1, kMaxSamples).description(""));
}

void addSetOption(CLI::App& command, std::vector<std::string>& overrides) {
    command
        .add_option("--set", overrides,
                    "Set a parameter of the scene, VALUE as in the scene file; repeatable")
        ->type_name("INSTANCE.PARAM=VALUE")
        ->check(CLI::Validator(checkOverride, ""))
        ->allow_extra_args(false);
}

void refuse(const char* option, const std::string& text, const std::string& expected) {
    throw CLI::ValidationError(option, "expected " + expected + ", got \"" + text + "\"");
}

}  // namespace Tarnkit
