#include "pelk/host/render/fingerprint.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "pelk/host/plugins/mesh_files.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_settings.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"

namespace Tarnkit {

namespace {

bool hashFile(const std::string& path, ContentHash& hash, std::string& error) {
    constexpr std::uint64_t kStep = 1 << 20;
    platform::InputFile file(path);
    hash.addNumber(file.getSize());
    std::vector<char> bytes(static_cast<std::size_t>(std::min(kStep, file.getSize())));
    bool good = file.isOpen();
    for (std::uint64_t place = 0; good && place < file.getSize(); place += bytes.size()) {
        bytes.resize(static_cast<std::size_t>(std::min(kStep, file.getSize() - place)));
        good = file.read(place, bytes.data(), bytes.size());
        hash.add(bytes.data(), bytes.size());
    }
    if (!good)
        error = file.getError();
    return good;
}

/// Adds a file that a parameter names, and what that one reads further. Of a mesh's libraries some
/// may be missing; that is told apart from an empty one.
bool hashSceneFile(const std::string& path, ContentHash& hash, std::string& error) {
    if (!hashFile(path, hash, error))
        return false;
    for (const std::string& further : filesBehindMesh(path)) {
        const bool exists = std::filesystem::is_regular_file(platform::nativePath(further));
        hash.addNumber(exists);
        if (exists && !hashFile(further, hash, error))
            return false;
    }
    return true;
}

}  // namespace

bool fingerprintOf(const Scene& scene, const RenderOptions& options, const std::string& version,
                   ContentDigest& fingerprint, std::string& error) {
    ContentHash hash;
    hash.addText(version);
    hash.addText(scene.source.plugins);
    hashSettings(scene.settings, hash);
    hash.addNumber(static_cast<std::uint64_t>(options.width));
    hash.addNumber(static_cast<std::uint64_t>(options.height));
    for (const auto* names : {&scene.settings.channels, &options.channels}) {
        for (const std::string& name : *names)
            hash.addText(name);
    }
    for (const std::string& file : scene.source.files) {
        if (!hashSceneFile(file, hash, error))
            return false;
    }
    for (const std::string& library : scene.source.libraries) {
        if (!hashFile(library, hash, error))
            return false;
    }
    fingerprint = hash.digest();
    return true;
}

}  // namespace Tarnkit
