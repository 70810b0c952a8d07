#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

#include "pelk/host/picture/image_output.h"

namespace Tarnkit {

// One function for each format: they write the whole picture through `output`, which goes to
// `file`, and on failure leave the reason with `output`. They see no failure of the disk.

bool writeExr(Picture& picture, const PictureInfo& info, PixelDepth depth, const std::string& file,
              OIIO::ImageOutput& output);
bool writePng(Picture& picture, const PictureInfo& info, const std::string& file,
              OIIO::ImageOutput& output);

/// Adds how the picture was made.
void describeOrigin(const PictureInfo& info, OIIO::ImageSpec& spec);

}  // namespace Tarnkit
