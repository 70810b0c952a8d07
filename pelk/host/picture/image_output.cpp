#include "pelk/host/picture/image_output.h"

#include <OpenImageIO/filesystem.h>

#include <algorithm>
#include <memory>

#include "pelk/base/thrown_text.h"
#include "pelk/host/picture/exr_writer.h"
#include "pelk/host/picture/file_ending.h"
#include "pelk/host/picture/png_writer.h"
#include "pelk/host/picture/region_file.h"
#include "pelk/platform/file.h"
#include "pelk/platform/output_file.h"

namespace Tarnkit {

namespace {

enum class Format { None, Exr, Png };

Format formatOf(const std::string& path) {
    if (hasEnding(path, ".exr"))
        return Format::Exr;
    return hasEnding(path, ".png") ? Format::Png : Format::None;
}

bool fail(const std::string& path, const std::string& reason, std::string& error) {
    error = "picture \"" + path + "\": " + reason;
    return false;
}

/// The stream that OpenImageIO's writers write to. Some of them ignore failed writes, so it reports
/// none: the file remembers the failure, and commit() reports it.
class OutputProxy final : public OIIO::Filesystem::IOProxy {
public:
    explicit OutputProxy(platform::OutputFile& output)
        : IOProxy(output.getTemporaryName(), Write), file(output) {}

    const char* proxytype() const override { return "output file"; }
    bool seek(std::int64_t place) override {
        file.seek(place);
        m_pos = place;
        return true;
    }
    std::size_t write(const void* data, std::size_t bytes) override {
        file.write(data, bytes);
        m_pos += static_cast<std::int64_t>(bytes);
        end = std::max(end, m_pos);
        return bytes;
    }
    std::size_t size() const override { return static_cast<std::size_t>(end); }

private:
    platform::OutputFile& file;
    std::int64_t end = 0;
};

}  // namespace

bool hasPictureEnding(const std::string& path) {
    return formatOf(path) != Format::None || isRegionFile(path);
}

bool canWritePicture(const std::string& path, std::string& error) {
    if (!hasPictureEnding(path))
        return fail(path, "the name must end in .exr, .png or .pkr", error);
    const platform::OutputFile file(path);
    return !file.getTemporaryName().empty() || fail(path, file.getError(), error);
}

bool writePicture(Picture& picture, const std::string& path, const PictureInfo& info,
                  PixelDepth depth, std::string& error) {
    const Format format = formatOf(path);
    if (format == Format::None)
        return fail(path, "the name must end in .exr or .png", error);
    platform::OutputFile file(path);
    if (file.getTemporaryName().empty())
        return fail(path, file.getError(), error);
    OutputProxy proxy(file);  // outlives `output`, which writes to the end
    const std::unique_ptr<OIIO::ImageOutput> output =
        OIIO::ImageOutput::create(format == Format::Png ? "png" : "openexr");
    if (!output || !output->set_ioproxy(&proxy))
        return fail(path, OIIO::geterror(), error);
    const std::string name = platform::nativePath(file.getTemporaryName());
    if (!(format == Format::Png ? writePng(picture, info, name, *output)
                                : writeExr(picture, info, depth, name, *output)))
        return fail(path, output->geterror(), error);
    return file.commit() || fail(path, file.getError(), error);
}

bool writeOutput(Picture& picture, const std::string& path, const FileHeader& header,
                 const PictureInfo& info, std::string& error) {
    const PixelDepth depth = header.halfFloat ? PixelDepth::Half : PixelDepth::Float;
    try {
        return isRegionFile(path) ? writeRegionFile(path, header, picture, error)
                                  : writePicture(picture, path, info, depth, error);
    } catch (...) {
        // Lack of memory: another output may need less.
        return fail(path, thrownText(), error);
    }
}

}  // namespace Tarnkit
