#include "pelk/host/plugins/mesh_io.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "pelk/host/plugins/confinement.h"
#include "pelk/platform/input_file.h"

namespace Tarnkit {

namespace {

/// A file that is open, with the place of the next read.
class MeshStream final : public Assimp::IOStream {
public:
    explicit MeshStream(const std::string& path) : file(path) {}

    const platform::InputFile& getFile() const { return file; }

    std::size_t Read(void* buffer, std::size_t size, std::size_t count) override {
        const std::uint64_t left = file.getSize() - place;
        const std::size_t items = static_cast<std::size_t>(
            std::min<std::uint64_t>(count, left / std::max<std::size_t>(size, 1)));
        if (!file.read(place, buffer, items * size))
            return 0;
        place += items * size;
        return items;
    }
    std::size_t Write(const void*, std::size_t, std::size_t) override { return 0; }
    aiReturn Seek(std::size_t offset, aiOrigin origin) override {
        const std::uint64_t start = origin == aiOrigin_SET   ? 0
                                    : origin == aiOrigin_CUR ? place
                                                             : file.getSize();
        // Backwards offsets come as what they are modulo 2^64.
        const std::uint64_t to = start + offset;
        if (to > file.getSize())
            return aiReturn_FAILURE;
        place = to;
        return aiReturn_SUCCESS;
    }
    std::size_t Tell() const override { return static_cast<std::size_t>(place); }
    std::size_t FileSize() const override { return static_cast<std::size_t>(file.getSize()); }
    void Flush() override {}

private:
    platform::InputFile file;
    std::uint64_t place = 0;
};

}  // namespace

bool MeshFiles::Exists(const char* file) const {
    std::string reason;
    return !mayRead(file, reason) || !platform::InputFile(file).isMissing();
}

Assimp::IOStream* MeshFiles::Open(const char* file, const char* mode) {
    if (std::strchr(mode, 'w'))
        return nullptr;
    if (std::string reason; !mayRead(file, reason)) {
        error = "cannot read \"" + std::string(file) + "\": " + reason;
        return nullptr;
    }
    auto stream = std::make_unique<MeshStream>(file);
    if (stream->getFile().isOpen())
        return stream.release();
    if (!stream->getFile().isMissing() && error.empty())
        error = stream->getFile().getError();
    return nullptr;
}

void MeshFiles::Close(Assimp::IOStream* stream) {
    delete stream;
}

}  // namespace Tarnkit
