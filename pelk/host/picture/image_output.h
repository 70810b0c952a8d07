#pragma once

#include <string>

#include "pelk/contract/channel_alias.h"
#include "pelk/host/picture/file_header.h"
#include "pelk/host/picture/picture.h"
#include "pelk/host/picture/picture_rect.h"

namespace Tarnkit {

/// Metadata of a picture file: how it was made.
struct PictureInfo {
    std::string scene;                      ///< the scene's file
    int samples = 0;                        ///< per pixel, as asked for
    int samplesLeast = 0, samplesMost = 0;  ///< done, of the pixel that got least and most
    std::string ended = {};  ///< "finished", or why samples are missing; empty if unknown
    double seconds = 0.0;
    std::string host;  ///< the program
    std::string version;
    int pngChannel = kBeautyChannel;  ///< a colour that a PNG shows
    PictureRect rect = {};            ///< what was rendered of the picture; empty: all of it
};

/// How colours are stored where the format leaves a choice.
enum class PixelDepth { Float, Half };

/// Whether a file of that name can be a picture: it ends in ".exr", ".png" or ".pkr".
bool hasPictureEnding(const std::string& path);

/// Checks before a render whether its picture can be written to `path`: the ending (".exr" or
/// ".png", or ".pkr" for writeRegionFile) and the directory. On failure `error` says what was
/// expected.
bool canWritePicture(const std::string& path, std::string& error);

/// Writes the picture. EXR has linear R, G, B, A, and all other channels as layers of their names
/// (`depth.Z`, `normals.X`, `diffuse.R`, `render_id.ID`), colours in `depth`, measures as floats,
/// ids as 32-bit integers. PNG has 8 bits a channel, sRGB encoded, with unassociated
/// (unpremultiplied) alpha; if the background, whose alpha is 0, shows anywhere, alpha is left out,
/// since unassociated alpha would hide it. Where `info.rect` is a part, EXR stores that part alone,
/// as its data window in the display window of the whole; PNG knows no such thing and is whole. The
/// file appears whole or not at all: on failure an older one stands, and `error` names the file and
/// says why.
bool writePicture(Picture& picture, const std::string& path, const PictureInfo& info,
                  PixelDepth depth, std::string& error);

/// Writes a region file (see writeRegionFile) or a picture, by the ending of the name. `header`
/// tells all that `info` does, for the files that keep more. Answers as the functions that it
/// calls; lack of memory is a failure too, and no exception.
bool writeOutput(Picture& picture, const std::string& path, const FileHeader& header,
                 const PictureInfo& info, std::string& error);

}  // namespace Tarnkit
