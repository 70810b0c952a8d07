#pragma once

#include <string>

#include "pelk/host/picture/picture.h"

namespace Tarnkit {

/// What a picture file says of how it was made.
struct PictureInfo {
    std::string scene;  ///< the scene's file
    int samples = 0;    ///< per pixel
    double seconds = 0.0;
    std::string host;  ///< the program
    std::string version;
};

/// How colours are stored where the format leaves a choice.
enum class PixelDepth { Float, Half };

/// Tells whether a picture can go to `path` by its ending (".exr" or ".png") and its directory, so
/// that a long render does not end in vain. `error` says what was expected.
bool canWritePicture(const std::string& path, std::string& error);

/// Writes the picture. EXR has linear R, G, B, A, and all other channels as layers of their names
/// (`depth.Z`, `normals.X`, `diffuse.R`, `render_id.ID`), colours in `depth`, measures as floats,
/// ids as 32-bit integers. PNG has 8 bits a channel, colour by the sRGB curve, and alpha, by which
/// the colour is then not multiplied; where the surroundings are seen, which have no alpha, it
/// leaves alpha out rather than hide them. The file appears whole or not at all: on failure an
/// older one stands, and `error` names the file and says why.
bool writePicture(Picture& picture, const std::string& path, const PictureInfo& info,
                  PixelDepth depth, std::string& error);

}  // namespace Tarnkit
