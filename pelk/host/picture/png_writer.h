#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

#include "pelk/host/picture/image_output.h"

namespace Tarnkit {

/// Writes beauty and alpha of a picture as a PNG file of 8 bits a channel, encoded for a display.
/// Called and answering as writeExr.
bool writePng(Picture& picture, const PictureInfo& info, const std::string& file,
              OIIO::ImageOutput& output);

}  // namespace Tarnkit
