#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pelk/host/picture/file_envelope.h"
#include "pelk/host/picture/picture.h"
#include "pelk/support/regions/transfer_block.h"

namespace Tarnkit {

/// Whether a file of that name is a region file: it ends in ".pkr", in upper or lower case.
bool isRegionFile(const std::string& path);

/// The channels of a picture, as region files name them.
std::vector<FileChannel> fileChannelsOf(Picture& picture);

/// Writes the pixels of `header.rect` and `header.channels`, the first ones of the picture, in the
/// block that regions are passed in (see transfer_block.h), with the header around it. The file
/// appears whole or not at all: on failure an older one stands, and `error` names the file and says
/// why.
bool writeRegionFile(const std::string& path, const FileHeader& header, Picture& picture,
                     std::string& error);

/// Reads the header of a region file. False if anything is wrong with it, or if its payload can't
/// be the pixels that it tells of; `error` has the words, with the file's name. A picture of the
/// header's rectangle takes no more memory than the file has bytes.
bool readRegionHeader(EnvelopeReader& file, std::string& error);

/// The pixels of a region file in memory, as they stood in the file.
class RegionPixels {
public:
    /// Reads the payload of a file behind readRegionHeader. False if it is damaged, or is not
    /// what the header says; `error` then has the words, with the file's name. Takes as much memory
    /// as the payload has bytes, or what an earlier file needed if that was more.
    bool read(EnvelopeReader& file, std::string& error);

    /// The first pixel of a channel, rows from the top without gaps. Not aligned.
    const u8* channel(std::size_t index) const { return block.pixels[index]; }

private:
    void makeRoom(std::size_t size);

    std::unique_ptr<u8[]> bytes;
    std::size_t capacity = 0;
    TransferBlock block;  // points into the former
};

}  // namespace Tarnkit
