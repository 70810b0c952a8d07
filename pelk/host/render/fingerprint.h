#pragma once

#include <string>

#include "pelk/host/picture/content_hash.h"
#include "pelk/host/render/render_job.h"

namespace Tarnkit {

class Scene;

/// The result of fingerprintOf.
struct Fingerprint {
    ContentDigest digest;
    std::string error;         ///< empty if all went well; else it names the file
    bool systemFault = false;  ///< a disk failed: the same may succeed later
};

/// What two renders must agree in to be parts of one picture, or one the other's continuation: the
/// instances of the scene and its settings, the contents of every file that it reads and of the
/// modules that its plug-ins come from, the version of this program, the size of the picture, its
/// noise and the list of channels. Comments and blanks of the scene's file don't count, nor do
/// samples, threads, tiles, the region, or where all those files lie: another machine finds the
/// same.
///
/// Reads each of the files once. The scene must not be in a render.
Fingerprint fingerprintOf(const Scene& scene, const RenderOptions& options,
                          const std::string& version);

}  // namespace Tarnkit
