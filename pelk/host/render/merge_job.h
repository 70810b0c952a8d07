#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "pelk/host/picture/file_header.h"
#include "pelk/host/picture/picture.h"

namespace Tarnkit {

/// What one merge is to do.
struct MergeOptions {
    std::vector<std::string> files;  ///< region files, at least one
    bool allowMissing = false;       ///< parts of the picture may be missing
    bool allowUneven = false;        ///< pixels may have unequal numbers of samples
    bool hostStamp = false;          ///< add a channel that shows who rendered what
    bool rectangular = false;        ///< what is there must be a rectangle, for a region file
};

/// What became of a merge.
struct MergeResult {
    bool ok = false;           ///< false: the picture is not to be used, `error` says why
    bool stopped = false;      ///< ended early by `stop`; not `ok` then
    bool systemFault = false;  ///< memory or a disk failed: the same may succeed later
    std::string error;
    FileHeader header;                 ///< of the merged picture, as a file of it tells
    std::vector<PictureRect> missing;  ///< pixels that no file has; empty for a whole picture
    int tiles = 0;                     ///< N, if all files are of --tile I/N, else 0
    std::vector<int> missingTiles;     ///< the I that no file has, in rising order

    /// What is missing, in the form that schedulers and options take: "tiles 3,5-7 of 16", or
    /// "region 0,4,10,8" for each rectangle.
    std::vector<std::string> missingTexts() const;
};

/// Puts regions that were rendered apart together into `picture`, bit by bit as one render makes
/// it, whatever the order of the files. All that headers tell is tested before any pixels are read:
/// a file of another picture, a gap, unequal numbers of samples. Pixels are read from one file
/// after the other, so that memory holds the picture and one region. Where two files have the same
/// pixels, these must be equal in all channels but that of kAliasHostStamp; what a file has already
/// been given by others entirely adds no rendering time.
///
/// With a channel of kAliasHostStamp, asked for or in the files, each part of the picture shows the
/// name of the computer that rendered it. `stop` may be set from any thread or a signal handler.
/// Nothing is thrown: `error` of the result names the files.
MergeResult mergeRegions(const MergeOptions& options, const std::atomic<bool>& stop,
                         Picture& picture);

}  // namespace Tarnkit
