#include "pelk/host/render/scene_files.h"

#include <set>

#include "pelk/host/plugins/mesh_files.h"
#include "pelk/host/scene/scene.h"

namespace Tarnkit {

std::vector<std::string> inputFilesOf(const Scene& scene) {
    std::set<std::string> files{scene.file};
    // A mesh may stand in a scene a thousand times; it is read for its libraries once.
    for (const std::string& file : scene.source.files) {
        if (!files.insert(file).second)
            continue;
        for (std::string& further : filesBehindMesh(file))
            files.insert(std::move(further));
    }
    files.insert(scene.source.libraries.begin(), scene.source.libraries.end());
    return {files.begin(), files.end()};
}

}  // namespace Tarnkit
