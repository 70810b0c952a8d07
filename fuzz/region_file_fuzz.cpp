// Region files: what is read is one picture's rectangle with all its pixels, and its header is
// written as it was read.

#include "pelk/host/picture/region_file.h"

#include "fuzz/sealed_file.h"
#include "pelk/support/regions/channel_record.h"

using namespace Tarnkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> bytes = sealedFile(data, size);
    const MemoryFile memory(bytes.data(), bytes.size());
    EnvelopeReader file(memory.name());
    std::string error;
    if (!readRegionHeader(file, error)) {
        require(!error.empty() && error.size() < 2000, "a refusal has words, not too many");
        return 0;
    }
    const FileHeader& header = file.getHeader();
    FileHeader again;
    require(decodeHeader(encodeHeader(header), again, error) && again == header,
            "a header survives the way to bytes and back");
    RegionPixels pixels;
    if (!pixels.read(file, error))
        return 0;
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < header.channels.size(); ++i) {
        const u8* channel = pixels.channel(i);
        const std::size_t length =
            static_cast<std::size_t>(header.rect.numPixels()) *
            static_cast<std::size_t>(channelTypeSize(header.channels[i].type));
        for (std::size_t at = 0; at < length; ++at)
            sum += channel[at];
    }
    require(sum <= bytes.size() * 255, "pixels are bytes of the file");
    return 0;
}
