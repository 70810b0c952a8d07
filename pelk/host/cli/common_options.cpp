#include "pelk/host/cli/common_options.h"

#include <CLI/CLI.hpp>

#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/setting_limits.h"

namespace Tarnkit {

namespace {

std::string checkOverride(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::size_t dot = text.find('.');
    const bool good =
        equals != std::string::npos && dot != std::string::npos && dot > 0 && dot + 1 < equals;
    return good ? "" : "expected INSTANCE.PARAM=VALUE, got \"" + text + "\"";
}

}  // namespace

void PictureOptions::addTo(CLI::App& command) {
    command
        .add_option_function<std::string>(
            "--size",
            [this](const std::string& text) {
                std::array<int, 2> size{};
                const IntLimits& side = kPictureSideLimits;
                if (!parseNumbers(text, 'x', size) || !side.allow(size[0]) ||
                    !side.allow(size[1]) || hasTooManyPixels(size[0], size[1]))
                    refuse("--size", text,
                           "WIDTHxHEIGHT, such as 640x480, at most " + std::to_string(side.most) +
                               " each way and " + std::to_string(kMaxPicturePixels) + " pixels");
                width = size[0];
                height = size[1];
            },
            "Size of the picture in pixels")
        ->type_name("WxH");
    command.add_option("--spp", samples, "Samples per pixel")
        ->type_name("N")
        ->check(CLI::Range(kSampleLimits.least, kSampleLimits.most).description(""));
}

RenderOptions PictureOptions::forRender(const SceneSettings& settings) const {
    RenderOptions options;
    options.width = width > 0 ? width : settings.width;
    options.height = height > 0 ? height : settings.height;
    options.samples = samples > 0 ? samples : settings.samples;
    options.noiseSeed = static_cast<u32>(settings.seed);
    return options;
}

void addSetOption(CLI::App& command, std::vector<std::string>& overrides) {
    command
        .add_option("--set", overrides,
                    "Set a parameter of the scene, or settings.NAME, VALUE as in the scene file; "
                    "repeatable")
        ->type_name("INSTANCE.PARAM=VALUE")
        ->check(CLI::Validator(checkOverride, ""))
        ->allow_extra_args(false);
}

void refuse(const char* option, const std::string& text, const std::string& expected) {
    throw CLI::ValidationError(option, "expected " + expected + ", got \"" + text + "\"");
}

}  // namespace Tarnkit
