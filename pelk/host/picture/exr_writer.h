#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

#include "pelk/host/picture/image_output.h"

namespace Tarnkit {

/// Writes all channels of a picture as an OpenEXR file: linear, beauty and alpha unnamed, the
/// others as layers. writePicture calls it, after it has made `output` write into its own temporary
/// file, of which `file` is the name. False on failure, with the reason left in `output`; a full
/// disk is not seen here but when the temporary file is committed.
bool writeExr(Picture& picture, const PictureInfo& info, PixelDepth depth, const std::string& file,
              OIIO::ImageOutput& output);

}  // namespace Tarnkit
