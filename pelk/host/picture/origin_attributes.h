#pragma once

#include <OpenImageIO/imageio.h>

#include "pelk/host/picture/image_output.h"

namespace Tarnkit {

/// Adds how the picture was made to the attributes of its file, the same ones in every format.
void addOriginAttributes(const PictureInfo& info, OIIO::ImageSpec& spec);

}  // namespace Tarnkit
