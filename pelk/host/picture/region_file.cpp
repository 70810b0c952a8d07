#include "pelk/host/picture/region_file.h"

#include <iterator>

#include "pelk/host/picture/file_ending.h"

namespace Tarnkit {

namespace {

std::vector<TransferChannel> transferChannelsOf(const FileHeader& header) {
    std::vector<TransferChannel> channels;
    for (const FileChannel& channel : header.channels)
        channels.push_back({.type = channel.type});
    return channels;
}

}  // namespace

bool isRegionFile(const std::string& path) {
    return hasEnding(path, ".pkr");
}

std::vector<FileChannel> fileChannelsOf(Picture& picture) {
    std::vector<FileChannel> channels;
    for (const ChannelRecord& record : picture.getRegion().getChannels())
        channels.push_back({record.type, record.alias, record.name});
    return channels;
}

bool writeRegionFile(const std::string& path, const FileHeader& header, Picture& picture,
                     std::string& error) {
    const PictureRect& rect = header.rect;
    const auto payload = [&](PayloadWriter& out) {
        picture.getRegion().writePart(
            [&](const void* bytes, std::size_t count) {
                out.write(bytes, count);
                return true;
            },
            rect.x0, rect.y0, rect.x1, rect.y1, static_cast<int>(header.channels.size()));
    };
    return writeEnvelope(path, header, payload, error);
}

bool readRegionHeader(EnvelopeReader& file, std::string& error) {
    if (!file.readHeader(FileKind::Region)) {
        error = file.getError();
        return false;
    }
    const FileHeader& header = file.getHeader();
    const PictureRect& rect = header.rect;
    const std::int64_t pixels = std::int64_t{rect.x1 - rect.x0} * (rect.y1 - rect.y0);
    const std::int64_t expected = transferSize(transferChannelsOf(header), pixels);
    if (header.payloadSize == static_cast<std::uint64_t>(expected))
        return true;
    error = "\"" + file.getName() + "\": its pixels have " + std::to_string(header.payloadSize) +
            " bytes, expected " + std::to_string(expected);
    return false;
}

/// Keeps memory for the next file: to have it anew costs more than to read into it.
void RegionPixels::makeRoom(std::size_t size) {
    if (size <= capacity)
        return;
    bytes.reset();
    capacity = 0;
    bytes = std::make_unique_for_overwrite<u8[]>(size);
    capacity = size;
}

bool RegionPixels::read(EnvelopeReader& file, std::string& error) {
    const FileHeader& header = file.getHeader();
    if (file.checkPayload()) {
        makeRoom(header.payloadSize);
        file.read(bytes.get(), header.payloadSize);
    }
    error = file.getError();
    if (!error.empty())
        return false;
    const std::vector<TransferChannel> channels = transferChannelsOf(header);
    ErrorChain fault =
        checkTransferBlock(bytes.get(), static_cast<std::int64_t>(header.payloadSize), channels);
    if (!fault.isError()) {
        block.read(bytes.get(), channels);
        const TransferHeader& found = block.header;
        if (PictureRect{found.x0, found.y0, found.x1, found.y1} == header.rect)
            return true;
        fault.addError("region file", 3, "header and pixels have other rectangles");
    }
    error = "\"" + file.getName() + "\": " + fault.getRecordText(0);
    return false;
}

}  // namespace Tarnkit
