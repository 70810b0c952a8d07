#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "pelk/host/picture/content_hash.h"
#include "pelk/host/picture/picture_rect.h"

namespace Tarnkit {

/// What the payload of a file of this program is.
enum class FileKind : std::uint32_t {
    Region = 1,      ///< finished pixels of a rectangle (.pkr)
    Checkpoint = 2,  ///< sums of samples, for a render to go on with (.pkc)
};

/// FileHeader::ended of a render that did all it was asked for.
inline constexpr const char* kFinished = "finished";

/// One channel of the pixels in a file, in the order of the payload.
struct FileChannel {
    int type = 0;   ///< of ChannelType
    int alias = 0;  ///< of ChannelAlias, -1 for a channel of the scene's own
    std::string name;

    bool operator==(const FileChannel&) const = default;
};

/// One render that contributed to a file: who rendered which pixels, and for how long.
struct FilePart {
    PictureRect rect;
    int tile = 0, tiles = 0;  ///< of --tile I/N; both 0 without it
    double seconds = 0.0;     ///< of tracing rays
    std::string computer;     ///< its name in the network, at most 31 bytes

    bool operator==(const FilePart&) const = default;
};

/// All that a file of this program tells of its payload. docs/region-file.md shows the bytes.
struct FileHeader {
    FileKind kind = FileKind::Region;
    /// Of all that decides on the pixels (see fingerprintOf): only files with the same one are
    /// parts of one picture.
    ContentDigest fingerprint;
    int width = 0, height = 0;              ///< of the whole picture
    PictureRect rect;                       ///< the pixels of the payload, inside the picture
    int samplesAsked = 0;                   ///< per pixel
    int samplesLeast = 0, samplesMost = 0;  ///< done, of the pixel that got least and most
    bool halfFloat = false;                 ///< colour depth that the scene asks pictures for
    std::string scene;                      ///< the scene's file, as the command line named it
    std::string program, version;           ///< that wrote the file
    std::string ended;  ///< kFinished, or why there are fewer samples than asked for
    std::vector<FileChannel> channels;
    std::vector<FilePart> parts;  ///< without overlaps unless renders did overlap
    /// Bytes behind the header, and their XXH3 check sum. Filled in by writeEnvelope.
    std::uint64_t payloadSize = 0, payloadChecksum = 0;

    bool operator==(const FileHeader&) const = default;

    /// Seconds of all parts together.
    double seconds() const;
};

/// The bytes of a header, its own size and check sum among them.
std::vector<unsigned char> encodeHeader(const FileHeader& header);

/// Bytes from which the size of a header can be told, at its start.
inline constexpr std::size_t kHeaderStart = 16;

/// The size in bytes of the header that begins with `start`, kHeaderStart bytes or fewer if the
/// file has no more. 0 if that is no file of this kind, or of a later version: `error` says so.
std::size_t headerSize(std::span<const unsigned char> start, std::string& error);

/// Reads a whole header, of headerSize bytes. False with an `error` if any of it is wrong; `header`
/// is as it was then. What has been read describes a picture: sizes are above 0 and at most 65,536
/// and 2^28 pixels, rectangles lie in one another, types are known. Takes no more memory than a few
/// times `bytes`.
bool decodeHeader(std::span<const unsigned char> bytes, FileHeader& header, std::string& error);

}  // namespace Tarnkit
