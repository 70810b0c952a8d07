#include "pelk/host/render/fingerprint.h"

#include <algorithm>
#include <vector>

#include "pelk/host/plugins/mesh_files.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_settings.h"
#include "pelk/platform/input_file.h"

namespace Tarnkit {

namespace {

/// Adds the content of files, up to the first that can't be read.
class FileHasher {
public:
    explicit FileHasher(ContentHash& hash_) : hash(hash_) {}

    bool add(const std::string& path) {
        constexpr std::uint64_t kStep = 1 << 20;
        platform::InputFile file(path);
        std::uint64_t left = file.getSize();
        hash.addNumber(left);
        std::vector<char> bytes(static_cast<std::size_t>(std::min(kStep, left)));
        bool good = file.isOpen();
        while (good && left > 0) {
            bytes.resize(static_cast<std::size_t>(std::min(kStep, left)));
            good = file.read(file.getSize() - left, bytes.data(), bytes.size());
            hash.add(bytes.data(), bytes.size());
            left -= bytes.size();
        }
        error = file.getError();
        systemFault = file.isSystemFault();
        return good;
    }

    /// Adds a file that a parameter names, and what that one reads further. Of a mesh's libraries
    /// some may be missing; that is told apart from an empty one.
    bool addWithFurther(const std::string& path) {
        if (!add(path))
            return false;
        for (const std::string& further : filesBehindMesh(path)) {
            const bool exists = platform::InputFile(further).isOpen();
            hash.addNumber(exists);
            if (exists && !add(further))
                return false;
        }
        return true;
    }

    std::string error;
    bool systemFault = false;

private:
    ContentHash& hash;
};

}  // namespace

Fingerprint fingerprintOf(const Scene& scene, const RenderOptions& options,
                          const std::string& version) {
    ContentHash hash;
    hash.addText(version);
    hash.addText(scene.source.plugins);
    hashSettings(scene.settings, hash);
    hash.addNumber(static_cast<std::uint64_t>(options.width));
    hash.addNumber(static_cast<std::uint64_t>(options.height));
    hash.addNumber(options.noiseSeed);
    for (const auto* names : {&scene.settings.channels, &options.channels}) {
        for (const std::string& name : *names)
            hash.addText(name);
    }
    FileHasher hasher(hash);
    const std::vector<std::string>& files = scene.source.files;
    const std::vector<std::string>& libraries = scene.source.libraries;
    const bool good =
        std::all_of(files.begin(), files.end(),
                    [&](const std::string& file) { return hasher.addWithFurther(file); }) &&
        std::all_of(libraries.begin(), libraries.end(),
                    [&](const std::string& file) { return hasher.add(file); });
    return {good ? hash.digest() : ContentDigest{}, hasher.error, hasher.systemFault};
}

}  // namespace Tarnkit
