#include "pelk/host/picture/image_output.h"

#include <OpenImageIO/filesystem.h>

#include <algorithm>
#include <memory>

#include "pelk/host/picture/exr_writer.h"
#include "pelk/host/picture/png_writer.h"
#include "pelk/platform/file.h"
#include "pelk/platform/output_file.h"

namespace Tarnkit {

namespace {

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

bool checkFormat(const std::string& path, std::string& error) {
    return formatOf(path) != Format::None || fail(path, "the name must end in .exr or .png", error);
}

}  // namespace

bool canWritePicture(const std::string& path, std::string& error) {
    if (!checkFormat(path, error))
        return false;
    const platform::OutputFile file(path);
    return !file.getTemporaryName().empty() || fail(path, file.getError(), error);
}

bool writePicture(Picture& picture, const std::string& path, const PictureInfo& info,
                  PixelDepth depth, std::string& error) {
    if (!checkFormat(path, error))
        return false;
    platform::OutputFile file(path);
    if (file.getTemporaryName().empty())
        return fail(path, file.getError(), error);
    const Format format = formatOf(path);
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

}  // namespace Tarnkit
