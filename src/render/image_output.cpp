#include "render/image_output.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/file.h"
#include "platform/output_file.h"

namespace Tarnkit {

namespace {

constexpr float kLargestHalf = 65504.0f;

enum class Format { None, Exr, Png };

Format formatOf(const std::string& path) {
    std::string ending = path.substr(std::min(path.rfind('.'), path.size()));
    for (char& c : ending)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    if (ending == ".exr")
        return Format::Exr;
    return ending == ".png" ? Format::Png : Format::None;
}

bool fail(const std::string& path, const std::string& reason, std::string& error) {
    error = "picture \"" + path + "\": " + reason;
    return false;
}

bool checkFormat(const std::string& path, std::string& error) {
    return formatOf(path) != Format::None || fail(path, "the name must end in .exr or .png", error);
}

float encodeSRGB(float value) {
    return value <= 0.0031308f ? value * 12.92f : 1.055f * std::pow(value, 1.0f / 2.4f) - 0.055f;
}

std::uint8_t toByte(float value) {
    // The order of the arguments sends what is no number to 0.
    return static_cast<std::uint8_t>(std::fmin(1.0f, std::fmax(0.0f, value)) * 255.0f + 0.5f);
}

/// One row for a PNG, whose colour is encoded and not multiplied by alpha.
void encodeBytes(const float* row, int width, std::uint8_t* out) {
    for (int x = 0; x < width; ++x, row += 4, out += 4) {
        const float inverse = row[3] > 0.0f ? 1.0f / row[3] : 0.0f;
        for (int channel = 0; channel < 3; ++channel)
            out[channel] = toByte(encodeSRGB(row[channel] * inverse));
        out[3] = toByte(row[3]);
    }
}

/// One row for 16-bit fractions, which would turn what is too bright into infinity.
void limitToHalf(const float* row, int width, float* out) {
    std::transform(row, row + 4 * width, out,
                   [](float value) { return std::clamp(value, -kLargestHalf, kLargestHalf); });
}

OIIO::ImageSpec makeSpec(const Picture& picture, const PictureInfo& info, Format format,
                         PixelDepth depth) {
    const OIIO::TypeDesc type = format == Format::Png       ? OIIO::TypeDesc::UINT8
                                : depth == PixelDepth::Half ? OIIO::TypeDesc::HALF
                                                            : OIIO::TypeDesc::FLOAT;
    OIIO::ImageSpec spec(picture.getWidth(), picture.getHeight(), 4, type);
    spec.channelnames = {"R", "G", "B", "A"};
    spec.alpha_channel = 3;
    if (format == Format::Png) {
        spec.attribute("oiio:UnassociatedAlpha", 1);
        spec.attribute("oiio:ColorSpace", "sRGB");
    }
    // All as texts, since PNG keeps no numbers.
    spec.attribute("Software", info.host + " " + info.version);
    spec.attribute("scene", info.scene);
    spec.attribute("samples", std::to_string(info.samples));
    spec.attribute("seconds", std::to_string(info.seconds));
    spec.attribute("host", info.host);
    spec.attribute("version", info.version);
    return spec;
}

bool writeRows(const Picture& picture, OIIO::ImageOutput& output, Format format, PixelDepth depth) {
    const int width = picture.getWidth();
    const size_t values = static_cast<size_t>(width) * 4;
    std::vector<std::uint8_t> bytes(format == Format::Png ? values : 0);
    std::vector<float> limited(format == Format::Exr && depth == PixelDepth::Half ? values : 0);
    for (int y = 0; y < picture.getHeight(); ++y) {
        const float* const row = picture.getRow(y);
        bool written = false;
        if (!bytes.empty()) {
            encodeBytes(row, width, bytes.data());
            written = output.write_scanline(y, 0, OIIO::TypeDesc::UINT8, bytes.data());
        } else if (!limited.empty()) {
            limitToHalf(row, width, limited.data());
            written = output.write_scanline(y, 0, OIIO::TypeDesc::FLOAT, limited.data());
        } else {
            written = output.write_scanline(y, 0, OIIO::TypeDesc::FLOAT, row);
        }
        if (!written)
            return false;
    }
    return true;
}

}  // namespace

bool canWritePicture(const std::string& path, std::string& error) {
    if (!checkFormat(path, error))
        return false;
    const platform::OutputFile file(path);
    return !file.getTemporaryName().empty() || fail(path, file.getError(), error);
}

bool writePicture(const Picture& picture, const std::string& path, const PictureInfo& info,
                  PixelDepth depth, std::string& error) {
    if (!checkFormat(path, error))
        return false;
    platform::OutputFile file(path);
    if (file.getTemporaryName().empty())
        return fail(path, file.getError(), error);
    const Format format = formatOf(path);
    const std::unique_ptr<OIIO::ImageOutput> output =
        OIIO::ImageOutput::create(format == Format::Png ? "png" : "openexr");
    if (!output)
        return fail(path, OIIO::geterror(), error);
    const OIIO::ImageSpec spec = makeSpec(picture, info, format, depth);
    if (!output->open(platform::nativePath(file.getTemporaryName()), spec) ||
        !writeRows(picture, *output, format, depth) || !output->close())
        return fail(path, output->geterror(), error);
    return file.commit() || fail(path, file.getError(), error);
}

}  // namespace Tarnkit
