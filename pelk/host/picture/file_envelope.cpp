#include "pelk/host/picture/file_envelope.h"

#include <algorithm>
#include <vector>

namespace Tarnkit {

bool writeEnvelope(const std::string& path, const FileHeader& header,
                   const std::function<void(PayloadWriter&)>& payload, std::string& error) {
    platform::OutputFile file(path);
    if (!file.getTemporaryName().empty()) {
        // The header's size doesn't depend on the payload, whose check sum it gets at the end.
        file.seek(static_cast<std::int64_t>(encodeHeader(header).size()));
        PayloadWriter writer(file);
        payload(writer);
        FileHeader whole = header;
        whole.payloadSize = writer.getWritten();
        whole.payloadChecksum = writer.checksum();
        const std::vector<unsigned char> bytes = encodeHeader(whole);
        file.seek(0);
        file.write(bytes.data(), bytes.size());
        if (file.commit())
            return true;
    }
    error = "file \"" + path + "\": " + file.getError();
    return false;
}

/// Notes what is wrong with the file, or what the system said if there is no `reason`.
bool EnvelopeReader::fail(const std::string& reason) {
    error = reason.empty() ? file.getError() : "\"" + name + "\": " + reason;
    return false;
}

bool EnvelopeReader::readHeader(FileKind kind) {
    std::string reason;
    unsigned char start[kHeaderStart];
    const std::size_t startSize =
        static_cast<std::size_t>(std::min<std::uint64_t>(file.getSize(), sizeof start));
    if (!file.isOpen() || !file.read(0, start, startSize))
        return fail();
    const std::size_t size = headerSize({start, startSize}, reason);
    if (size == 0)
        return fail(reason);
    if (size > file.getSize())
        return fail("the file is cut short inside its header");
    std::vector<unsigned char> bytes(size);
    if (!file.read(0, bytes.data(), size))
        return fail();
    if (!decodeHeader(bytes, header, reason))
        return fail(reason);
    if (header.kind != kind)
        return fail(kind == FileKind::Region ? "it is no region file but a checkpoint"
                                             : "it is no checkpoint but a region file");
    payloadPlace = size;
    position = 0;
    if (header.payloadSize != file.getSize() - size)
        return fail("it should have " + std::to_string(header.payloadSize) +
                    " bytes behind its header and has " + std::to_string(file.getSize() - size));
    return true;
}

bool EnvelopeReader::checkPayload() {
    constexpr std::uint64_t kStep = 1 << 20;
    std::vector<unsigned char> bytes(static_cast<std::size_t>(std::min(kStep, header.payloadSize)));
    ContentHash hash;
    for (position = 0; left() > 0;) {
        const std::size_t size = static_cast<std::size_t>(std::min(kStep, left()));
        if (!read(bytes.data(), size))
            return false;
        hash.add(bytes.data(), size);
    }
    position = 0;
    return hash.checksum() == header.payloadChecksum || fail("its content is damaged");
}

bool EnvelopeReader::read(void* data, std::size_t size) {
    if (size > left())
        return fail("its content is shorter than expected");
    if (!file.read(payloadPlace + position, data, size))
        return fail();
    position += size;
    return true;
}

}  // namespace Tarnkit
