#include "pelk/host/plugins/image_check.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "pelk/host/picture/file_ending.h"

namespace Tarnkit {

namespace {

constexpr int kMostSide = 65536, kMostChannels = 1024;
constexpr std::uint64_t kMostPixels = 1 << 28, kMostTileBytes = 1 << 28;
/// No deflate stream has more bytes in one of its own.
constexpr std::uint64_t kMostByDeflate = 1032;

std::uint32_t bigEndian(const char* bytes) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

/// The least bytes that the pixels of a PNG have when unpacked, by its IHDR chunk.
std::uint64_t leastPngBytes(platform::InputFile& file) {
    char head[8];
    if (!file.read(16, head, sizeof head))
        return 0;
    const std::uint64_t bits = std::uint64_t{bigEndian(head)} * bigEndian(head + 4);
    return bits / 8;
}

}  // namespace

std::string imageFormat(const std::string& file) {
    static constexpr struct {
        std::string_view ending;
        const char* format;
    } kFormats[] = {
        {".exr", "openexr"}, {".png", "png"}, {".jpg", "jpeg"}, {".jpeg", "jpeg"}, {".tif", "tiff"},
        {".tiff", "tiff"},   {".tx", "tiff"}, {".hdr", "hdr"},  {".tga", "targa"}, {".bmp", "bmp"},
        {".ppm", "pnm"},     {".pgm", "pnm"}, {".pbm", "pnm"},  {".pnm", "pnm"},   {".pfm", "pnm"},
        {".webp", "webp"},   {".psd", "psd"}, {".sgi", "sgi"},
    };
    for (const auto& known : kFormats) {
        if (hasEnding(file, known.ending))
            return known.format;
    }
    return {};
}

bool isCutPng(platform::InputFile& file) {
    constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
    char head[8];
    if (!file.read(0, head, 8) || std::string_view(head, 8) != kSignature)
        return false;
    std::uint64_t packed = 0;
    for (std::uint64_t at = 8; at < file.getSize();) {
        if (!file.read(at, head, 8))
            return true;
        const std::uint64_t length = bigEndian(head);
        const std::string_view type(head + 4, 4);
        packed += type == "IDAT" ? length : 0;
        if (type == "IEND")
            break;          // what follows is no concern of the picture's
        at += 12 + length;  // with its length, its type and a check sum behind it
        if (at > file.getSize())
            return true;
    }
    return packed == 0 || leastPngBytes(file) / kMostByDeflate > packed;
}

bool isSensibleSize(const OIIO::ImageSpec& spec, std::uint64_t fileSize, std::string& reason) {
    const auto asText = [](std::uint64_t number) { return std::to_string(number); };
    const auto width = static_cast<std::uint64_t>(spec.width);
    const auto height = static_cast<std::uint64_t>(spec.height);
    const std::string size = "its head tells of " + asText(width) + " x " + asText(height) +
                             " pixels with " + std::to_string(spec.nchannels) + " channels";
    if (spec.width < 1 || spec.height < 1 || spec.width > kMostSide || spec.height > kMostSide ||
        width * height > kMostPixels || spec.nchannels < 1 || spec.nchannels > kMostChannels) {
        reason = size + "; expected at most " + std::to_string(kMostSide) + " each way, " +
                 asText(kMostPixels) + " together, and " + std::to_string(kMostChannels) +
                 " channels";
        return false;
    }
    // Pictures of one colour are packed well, but not as well as that.
    constexpr std::uint64_t kSmall = 1 << 26, kMostByPacking = 1 << 16;
    const std::uint64_t bytes = spec.image_bytes(true);
    if (bytes > kSmall && bytes / kMostByPacking > fileSize) {
        reason = size + ", which can't be in " + asText(fileSize) + " bytes";
        return false;
    }
    if (spec.tile_width > 0 && spec.tile_bytes(true) > kMostTileBytes) {
        reason = "its tiles have more than " + asText(kMostTileBytes) + " bytes";
        return false;
    }
    return true;
}

}  // namespace Tarnkit
