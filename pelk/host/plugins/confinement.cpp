#include "pelk/host/plugins/confinement.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "pelk/platform/file.h"

namespace Tarnkit {

namespace {

namespace fs = std::filesystem;

/// Where scenes may read; none: everywhere.
std::optional<std::vector<fs::path>> allowed;

/// Where a name leads, as an absolute path without links; of what isn't there, the part that is.
/// Empty if the system can't tell.
fs::path placeOf(const std::string& name) {
    std::error_code error;
    // Not platform::fullPath: behind a link, ".." leads elsewhere than the text says.
    const fs::path full = fs::absolute(platform::nativePath(name), error);
    const fs::path place = error ? fs::path() : fs::weakly_canonical(full, error);
    return error ? fs::path() : place;
}

bool isBelow(const fs::path& place, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), place.begin(), place.end()).first ==
           folder.end();
}

}  // namespace

Confinement::Confinement(const std::vector<std::string>& folders) {
    allowed.emplace();
    for (const std::string& folder : folders) {
        if (fs::path place = placeOf(folder.empty() ? "." : folder); !place.empty())
            allowed->push_back(std::move(place));
    }
}

Confinement::~Confinement() {
    allowed.reset();
}

bool mayRead(const std::string& file, std::string& reason) {
    if (!allowed)
        return true;
    const fs::path place = placeOf(file);
    const bool isAllowed = !place.empty() && std::any_of(allowed->begin(), allowed->end(),
                                                         [&](const fs::path& folder) {
                                                             return isBelow(place, folder);
                                                         });
    if (!isAllowed)
        reason = "it lies outside of the folders that --confine allows";
    return isAllowed;
}

}  // namespace Tarnkit
