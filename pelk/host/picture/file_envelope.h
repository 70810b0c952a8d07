#pragma once

#include <functional>
#include <string>

#include "pelk/host/picture/file_header.h"
#include "pelk/platform/input_file.h"
#include "pelk/platform/output_file.h"

namespace Tarnkit {

// The envelope around what this program keeps in files of its own: a header that tells all without
// the payload, and a payload of one kind or another, both under a check sum.

/// Takes the payload of a file piece by piece, in its order, and writes it at once: a payload may
/// be larger than what memory has left.
class PayloadWriter {
public:
    explicit PayloadWriter(platform::OutputFile& output) : file(output) {}

    /// A write that fails is noticed at the end, by writeEnvelope.
    void write(const void* data, std::size_t size) {
        file.write(data, size);
        hash.add(data, size);
        written += size;
    }
    std::uint64_t getWritten() const { return written; }
    std::uint64_t checksum() const { return hash.checksum(); }

private:
    platform::OutputFile& file;
    ContentHash hash;
    std::uint64_t written = 0;
};

/// Writes a file: the header, with size and check sum of the payload filled in, and what `payload`
/// writes, which may still change numbers of the header, but not the length of its texts and lists.
/// The file appears whole or not at all, and is safely on disk when this returns. On
/// failure an older one stands, and `error` names the file and says why. What `payload` throws
/// passes through.
bool writeEnvelope(const std::string& path, const FileHeader& header,
                   const std::function<void(PayloadWriter&)>& payload, std::string& error);

/// Reads such a file. Nothing is trusted: sizes are compared with what is there before memory is
/// taken for them, so that takes no more than the file's own size.
///
///     EnvelopeReader file(path);
///     if (!file.readHeader(FileKind::Region) || !file.checkPayload())
///         return fail(file.getError());
///     file.read(pixels.data(), bytes);
class EnvelopeReader {
public:
    explicit EnvelopeReader(const std::string& path) : file(path), name(path) {}

    /// Comes first. False if this is no file of that kind, or a part of it is missing or damaged,
    /// as far as can be told without reading the payload.
    bool readHeader(FileKind kind);
    const FileHeader& getHeader() const { return header; }
    /// As it was given.
    const std::string& getName() const { return name; }

    /// Reads through the payload and compares the check sum. False if it is damaged. What it holds
    /// may be trusted after that, as far as its writer may be. The next read begins at its start.
    bool checkPayload();

    /// Reads what follows in the payload. False if it has less than that, or the system fails.
    bool read(void* data, std::size_t size);
    /// Bytes of the payload that have not been read.
    std::uint64_t left() const { return header.payloadSize - position; }

    /// What went wrong, with the file's name and what was expected.
    const std::string& getError() const { return error; }
    /// Whether the system failed, and not the file: the same may succeed later.
    bool isSystemFault() const { return file.isSystemFault(); }

private:
    bool fail(const std::string& reason = {});

    platform::InputFile file;
    std::string name, error;
    FileHeader header;
    std::uint64_t payloadPlace = 0, position = 0;
};

}  // namespace Tarnkit
