#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

#include "pelk/platform/input_file.h"

namespace Tarnkit {

// What must hold of an image file before memory is asked for its pixels: its head may say anything.

/// The format of a file by the ending of its name, as the image library calls it; empty for what is
/// no still picture to be read here. The library would read films, and texts that name further
/// files, too.
std::string imageFormat(const std::string& file);

/// Whether a PNG ends inside a chunk, before the first one with pixels, or has fewer bytes for them
/// than deflate can make them of. Its reader finds out too, but prints a line of its own then.
/// False for other files.
bool isCutPng(platform::InputFile& file);

/// Whether an image can have the size that its head tells, with so many bytes in the file: sides of
/// at most 65,536 pixels and 2^28 together, 1,024 channels, tiles of 256 MiB. On false `reason`
/// says what was found and expected.
bool isSensibleSize(const OIIO::ImageSpec& spec, std::uint64_t fileSize, std::string& reason);

}  // namespace Tarnkit
