#include "pelk/host/picture/file_header.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <string_view>

#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

// Like the first bytes of a PNG: one beyond ASCII, and line ends that a transfer as text changes.
constexpr unsigned char kMagic[8] = {0x89, 'P', 'E', 'L', 'K', '\r', '\n', 0x1a};
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kHalfFloatFlag = 1;
constexpr std::size_t kSizePlace = 12, kChecksumSize = 8;
constexpr int kMaxSide = 65536;
constexpr std::int64_t kMaxPixels = 1 << 28;

/// Little-endian numbers and texts, each behind the last.
class ByteWriter {
public:
    void number(std::uint64_t value, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i)
            bytes.push_back(static_cast<unsigned char>(value >> 8 * i));
    }
    void u32(std::uint32_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    void i32(int value) { u32(static_cast<std::uint32_t>(value)); }
    void text(std::string_view value) {
        u32(static_cast<std::uint32_t>(value.size()));
        bytes.insert(bytes.end(), value.begin(), value.end());
    }
    void rect(const PictureRect& r) {
        for (const int edge : {r.x0, r.y0, r.x1, r.y1})
            i32(edge);
    }

    std::vector<unsigned char> bytes;
};

/// Reads what ByteWriter writes. Behind the end there are zeros, and `isWhole` is false.
class ByteReader {
public:
    explicit ByteReader(std::span<const unsigned char> text) : bytes(text) {}

    std::uint64_t number(std::size_t size) {
        const std::span<const unsigned char> part = take(size);
        std::uint64_t value = 0;
        for (std::size_t i = part.size(); i-- > 0;)
            value = value << 8 | part[i];
        return value;
    }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t u64() { return number(8); }
    int i32() { return static_cast<int>(u32()); }
    std::string text() {
        const std::span<const unsigned char> part = take(u32());
        return {part.begin(), part.end()};
    }
    PictureRect rect() {
        PictureRect r;
        for (int* const edge : {&r.x0, &r.y0, &r.x1, &r.y1})
            *edge = i32();
        return r;
    }
    bool isWhole() const { return whole; }
    bool atEnd() const { return whole && bytes.empty(); }

private:
    std::span<const unsigned char> take(std::size_t size) {
        whole = whole && size <= bytes.size();
        if (!whole)
            return {};
        const std::span<const unsigned char> part = bytes.first(size);
        bytes = bytes.subspan(size);
        return part;
    }

    std::span<const unsigned char> bytes;
    bool whole = true;
};

std::uint64_t checksumOf(std::span<const unsigned char> bytes) {
    ContentHash hash;
    hash.add(bytes.data(), bytes.size());
    return hash.checksum();
}

bool isInside(const PictureRect& inner, const PictureRect& outer) {
    return !inner.isEmpty() && inner.x0 >= outer.x0 && inner.y0 >= outer.y0 &&
           inner.x1 <= outer.x1 && inner.y1 <= outer.y1;
}

bool isSensible(const FilePart& part, const PictureRect& rect) {
    return isInside(part.rect, rect) && part.tile >= 0 && part.tile <= part.tiles &&
           part.tiles <= kMaxSide && std::isfinite(part.seconds) && part.seconds >= 0.0;
}

/// Whether the values can be those of a picture, so that code behind this need not ask.
bool isSensible(const FileHeader& header) {
    const auto isSide = [](int side) { return side > 0 && side <= kMaxSide; };
    const bool hasSize = isSide(header.width) && isSide(header.height) &&
                         std::int64_t{header.width} * header.height <= kMaxPixels;
    const auto hasType = [](const FileChannel& c) { return channelTypeSize(c.type) > 0; };
    const auto fits = [&](const FilePart& part) { return isSensible(part, header.rect); };
    return hasSize && isInside(header.rect, {0, 0, header.width, header.height}) &&
           header.samplesAsked >= 0 && header.samplesLeast >= 0 &&
           header.samplesLeast <= header.samplesMost &&
           (header.kind == FileKind::Region || header.kind == FileKind::Checkpoint) &&
           std::all_of(header.channels.begin(), header.channels.end(), hasType) &&
           std::all_of(header.parts.begin(), header.parts.end(), fits);
}

void readLists(ByteReader& in, FileHeader& header) {
    const std::uint32_t channels = in.u32(), parts = in.u32();
    header.scene = in.text();
    header.program = in.text();
    header.version = in.text();
    header.ended = in.text();
    for (std::uint32_t i = 0; i < channels && in.isWhole(); ++i) {
        FileChannel& channel = header.channels.emplace_back();
        channel.type = in.i32();
        channel.alias = in.i32();
        channel.name = in.text();
    }
    for (std::uint32_t i = 0; i < parts && in.isWhole(); ++i) {
        FilePart& part = header.parts.emplace_back();
        part.rect = in.rect();
        part.tile = in.i32();
        part.tiles = in.i32();
        part.seconds = std::bit_cast<double>(in.u64());
        part.computer = in.text();
    }
}

FileHeader readFields(ByteReader& in) {
    FileHeader header;
    header.kind = static_cast<FileKind>(in.u32());
    header.halfFloat = in.u32() == kHalfFloatFlag;
    header.payloadSize = in.u64();
    header.payloadChecksum = in.u64();
    header.fingerprint.low = in.u64();
    header.fingerprint.high = in.u64();
    header.width = in.i32();
    header.height = in.i32();
    header.rect = in.rect();
    header.samplesAsked = in.i32();
    header.samplesLeast = in.i32();
    header.samplesMost = in.i32();
    readLists(in, header);
    return header;
}

}  // namespace

double FileHeader::seconds() const {
    return std::accumulate(parts.begin(), parts.end(), 0.0,
                           [](double sum, const FilePart& part) { return sum + part.seconds; });
}

std::vector<unsigned char> encodeHeader(const FileHeader& header) {
    ByteWriter out;
    out.bytes.assign(std::begin(kMagic), std::end(kMagic));
    out.u32(kVersion);
    out.u32(0);  // the size, once it is known
    out.u32(static_cast<std::uint32_t>(header.kind));
    out.u32(header.halfFloat ? kHalfFloatFlag : 0);
    out.u64(header.payloadSize);
    out.u64(header.payloadChecksum);
    out.u64(header.fingerprint.low);
    out.u64(header.fingerprint.high);
    out.i32(header.width);
    out.i32(header.height);
    out.rect(header.rect);
    for (const int samples : {header.samplesAsked, header.samplesLeast, header.samplesMost})
        out.i32(samples);
    out.u32(static_cast<std::uint32_t>(header.channels.size()));
    out.u32(static_cast<std::uint32_t>(header.parts.size()));
    for (const std::string& text : {header.scene, header.program, header.version, header.ended})
        out.text(text);
    for (const FileChannel& channel : header.channels) {
        out.i32(channel.type);
        out.i32(channel.alias);
        out.text(channel.name);
    }
    for (const FilePart& part : header.parts) {
        out.rect(part.rect);
        out.i32(part.tile);
        out.i32(part.tiles);
        out.u64(std::bit_cast<std::uint64_t>(part.seconds));
        out.text(part.computer);
    }
    for (std::size_t i = 0; i < 4; ++i)
        out.bytes[kSizePlace + i] =
            static_cast<unsigned char>((out.bytes.size() + kChecksumSize) >> 8 * i);
    out.u64(checksumOf(out.bytes));
    return std::move(out.bytes);
}

std::size_t headerSize(std::span<const unsigned char> start, std::string& error) {
    if (start.size() < kHeaderStart ||
        !std::equal(std::begin(kMagic), std::end(kMagic), start.begin())) {
        error = "it does not begin like a file that pelk writes";
        return 0;
    }
    ByteReader in(start.subspan(sizeof kMagic));
    const std::uint32_t version = in.u32(), size = in.u32();
    if (version != kVersion) {
        error = "its format has the number " + std::to_string(version) + "; expected " +
                std::to_string(kVersion);
        return 0;
    }
    if (size < kHeaderStart + kChecksumSize) {
        error = "its header is damaged";
        return 0;
    }
    return size;
}

bool decodeHeader(std::span<const unsigned char> bytes, FileHeader& header, std::string& error) {
    const std::size_t size = headerSize(bytes, error);
    if (size == 0)
        return false;
    error = "its header is damaged";
    if (size != bytes.size())
        return false;
    const std::span<const unsigned char> content = bytes.first(size - kChecksumSize);
    ByteReader checksum(bytes.last(kChecksumSize)), in(content.subspan(kHeaderStart));
    if (checksum.u64() != checksumOf(content))
        return false;
    FileHeader read = readFields(in);
    if (!in.atEnd() || !isSensible(read))
        return false;
    header = std::move(read);
    return true;
}

}  // namespace Tarnkit
