#include "pelk/host/plugins/image_source.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "pelk/host/plugins/confinement.h"
#include "pelk/host/plugins/image_check.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"
#include "pelk/platform/memory_shortage.h"

namespace Tarnkit {

namespace {

constexpr int kRowsAtOnce = 64;

/// The cache that all images share. Alpha is left as the file has it: the colour must be decoded
/// before it is multiplied.
OIIO::ImageCache* sharedCache() {
    OIIO::ImageCache* const cache = OIIO::ImageCache::create(true);
    cache->attribute("unassociatedalpha", 1);
    cache->attribute("autotile", kRowsAtOnce);
    return cache;
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

/// Reads all tiles, one after the other. False where one is broken or missing.
bool readTiles(OIIO::ImageInput& input, const OIIO::ImageSpec& spec) {
    std::vector<char> buffer(spec.tile_bytes(true));
    for (int y = spec.y; y < spec.y + spec.height; y += spec.tile_height) {
        for (int x = spec.x; x < spec.x + spec.width; x += spec.tile_width) {
            if (!input.read_tile(x, y, spec.z, OIIO::TypeDesc::UNKNOWN, buffer.data()) ||
                input.has_error())
                return false;
        }
    }
    return true;
}

bool readRows(OIIO::ImageInput& input, const OIIO::ImageSpec& spec) {
    constexpr std::size_t kBytesAtOnce = 1 << 24;
    const std::size_t row = spec.scanline_bytes(true);
    const int step = static_cast<int>(std::clamp<std::size_t>(kBytesAtOnce / row, 1, kRowsAtOnce));
    std::vector<char> buffer(row * static_cast<std::size_t>(step));
    for (int y = spec.y; y < spec.y + spec.height; y += step) {
        const int end = std::min(y + step, spec.y + spec.height);
        if (!input.read_scanlines(0, 0, y, end, spec.z, 0, spec.nchannels, OIIO::TypeDesc::UNKNOWN,
                                  buffer.data()) ||
            input.has_error())
            return false;
    }
    return true;
}

/// Whether the file may be opened as an image at all, by what can be told without the image
/// library.
bool checkFile(platform::InputFile& file, const std::string& path, std::string& error) {
    if (imageFormat(path).empty()) {
        error =
            "an image file ends in .exr, .png, .jpg, .tif, .tx, .hdr, .tga, .bmp, .ppm, .pfm, "
            ".webp, .psd or .sgi";
        return false;
    }
    std::string reason;
    if (!mayRead(path, reason) || !file.isOpen()) {
        error = "it can't be read: " + (reason.empty() ? file.getReason() : reason);
        return false;
    }
    if (!isCutPng(file))
        return true;
    error = "the file is cut short";
    return false;
}

/// Reads all pixels, a few rows at a time. The libraries behind some formats go on over missing
/// data and leave no more than a message.
bool readThrough(const std::string& path, OIIO::ImageSpec& spec, std::string& error) {
    platform::InputFile file(path);
    if (!checkFile(file, path, error))
        return false;
    // By its own format alone: the library would try all others too.
    const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::create(imageFormat(path));
    if (!input || !input->open(path, spec)) {
        error = firstLine(input ? input->geterror() : OIIO::geterror());
        return false;
    }
    if (!isSensibleSize(spec, file.getSize(), error))
        return false;
    const bool whole = spec.tile_width > 0 ? readTiles(*input, spec) : readRows(*input, spec);
    if (!whole)
        error = "broken or cut short: " + firstLine(input->geterror());
    return whole;
}

/// The pixel for a place that may lie outside.
int wrapped(int i, int size, bool repeat) {
    if (!repeat)
        return std::clamp(i, 0, size - 1);
    const int rest = i % size;
    return rest < 0 ? rest + size : rest;
}

/// A texture coordinate as a place on the picture, 0 to 1.
double onPicture(float x, bool repeat) {
    if (!std::isfinite(x))
        return 0.0;
    const double place = x;
    return repeat ? place - std::floor(place) : std::clamp(place, 0.0, 1.0);
}

}  // namespace

float decodeSRGB(float value) {
    return value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f);
}

bool ImageSource::open(const std::string& file, ColorSpace space, std::string& error) {
    handle = nullptr;
    const std::string path = platform::nativePath(file);
    std::string reason;
    OIIO::ImageSpec spec;
    bool opened = readThrough(path, spec, reason);
    if (opened) {
        cache = sharedCache();
        const OIIO::ustring name(path);
        // Read anew for each render: the times of files are too coarse to tell a change.
        cache->invalidate(name, true);
        handle = cache->get_image_handle(name);
        const OIIO::ImageSpec* const cached = cache->imagespec(handle, nullptr);
        opened = cached != nullptr;
        if (opened)
            spec = *cached;
        else
            reason = firstLine(cache->geterror());
    }
    if (!opened) {
        handle = nullptr;
        error =
            "image \"" + file + "\": " + (platform::hadMemoryShortage() ? "out of memory" : reason);
        return false;
    }
    takeLayout(spec, space);
    return true;
}

void ImageSource::takeLayout(const OIIO::ImageSpec& spec, ColorSpace space) {
    left = spec.x;
    top = spec.y;
    width = spec.width;
    height = spec.height;
    channels = std::min(spec.nchannels, kMaxChannels);
    alphaChannel = spec.alpha_channel < channels ? spec.alpha_channel : -1;
    colorChannels = channels - (alphaChannel >= 0) >= 3 ? 3 : 1;
    associatedAlpha = spec.get_int_attribute("oiio:UnassociatedAlpha") == 0;
    const bool whole = !spec.format.is_floating_point();
    srgb = space == ColorSpace::SRGB || (space == ColorSpace::Auto && whole);
    unit = spec.format == OIIO::TypeDesc::UINT8    ? 255.0f
           : spec.format == OIIO::TypeDesc::UINT16 ? 65535.0f
                                                   : 1.0f;
    for (std::size_t i = 0; i < decodedBytes.size(); ++i) {
        const float value = static_cast<float>(i) / 255.0f;
        decodedBytes[i] = srgb ? decodeSRGB(value) : value;
    }
}

/// Fetches the pixels from (x0, y0) to (x1, y1), both inside; each row's after the last's.
void ImageSource::fetch(int x0, int y0, int x1, int y1, Texel* texels) const {
    cache->get_pixels(handle, nullptr, 0, 0, left + x0, left + x1 + 1, top + y0, top + y1 + 1, 0, 1,
                      0, channels, OIIO::TypeDesc::FLOAT, texels, sizeof(Texel),
                      static_cast<OIIO::stride_t>(sizeof(Texel)) * (x1 - x0 + 1));
}

float ImageSource::decodeValue(float value) const {
    if (bytes)
        return decodedBytes[static_cast<std::size_t>(value * 255.0f + 0.5f)];
    return srgb ? decodeSRGB(value) : value;
}

AColor ImageSource::decode(const Texel& texel) const {
    const float* const c = texel.channels;
    const float alpha = alphaChannel >= 0 ? c[alphaChannel] : 1.0f;
    Color color = colorChannels == 3 ? Color(c[0], c[1], c[2]) : Color(c[0]);
    // The curve holds for the colour itself, not for one that is multiplied by its alpha.
    if (srgb && associatedAlpha && alpha > 0.0f && alpha < 1.0f) {
        color *= 1.0f / alpha;
        return {Color(decodeSRGB(color.r), decodeSRGB(color.g), decodeSRGB(color.b)) * alpha,
                alpha};
    }
    color = {decodeValue(color.r), decodeValue(color.g), decodeValue(color.b)};
    return {associatedAlpha ? color : color * alpha, alpha};
}

AColor ImageSource::sample(float u, float v, bool repeat) const {
    if (!handle)
        return {Color(0), 1.0f};
    const double x = onPicture(u, repeat) * width - 0.5;
    const double y = (1.0 - onPicture(v, repeat)) * height - 0.5;
    const double left0 = std::floor(x), top0 = std::floor(y);
    const int x0 = wrapped(static_cast<int>(left0), width, repeat);
    const int y0 = wrapped(static_cast<int>(top0), height, repeat);
    const int x1 = wrapped(static_cast<int>(left0) + 1, width, repeat);
    const int y1 = wrapped(static_cast<int>(top0) + 1, height, repeat);
    Texel texels[4];
    if (x1 == x0 + 1 && y1 == y0 + 1) {
        fetch(x0, y0, x1, y1, texels);
    } else {
        fetch(x0, y0, x0, y0, &texels[0]);
        fetch(x1, y0, x1, y0, &texels[1]);
        fetch(x0, y1, x0, y1, &texels[2]);
        fetch(x1, y1, x1, y1, &texels[3]);
    }
    const float fx = static_cast<float>(x - left0), fy = static_cast<float>(y - top0);
    const float weights[4] = {(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy};
    AColor result;
    for (int i = 0; i < 4; ++i) {
        const AColor texel = decode(texels[i]);
        result.color += texel.color * weights[i];
        result.alpha += texel.alpha * weights[i];
    }
    return result;
}

void ImageSource::readRow(int y, std::span<AColor> row) const {
    std::vector<Texel> texels(row.size());
    fetch(0, y, width - 1, y, texels.data());
    std::transform(texels.begin(), texels.end(), row.begin(),
                   [this](const Texel& texel) { return decode(texel); });
}

float ImageSource::nearest(float u, float v, bool repeat) const {
    if (!handle)
        return 0.0f;
    const int x = static_cast<int>(onPicture(u, repeat) * width);
    const int y = static_cast<int>((1.0 - onPicture(v, repeat)) * height);
    const int column = std::min(x, width - 1), row = std::min(y, height - 1);
    Texel texel;
    fetch(column, row, column, row, &texel);
    return texel.channels[0] * unit;
}

}  // namespace Tarnkit
