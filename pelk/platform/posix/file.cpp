#include "pelk/platform/file.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace Tarnkit::platform {

namespace {

/// The working directory, ending in a separator; empty if it is unknown.
std::string workingDirectory() {
    char path[PATH_MAX];
    // Where the directory lies outside the process's root, Linux answers "(unreachable)" and a
    // path.
    if (!getcwd(path, sizeof path) || path[0] != '/')
        return {};
    return std::string(path) + "/";
}

/// Adds a name behind an absolute path; `.` adds nothing and `..` takes the last name away.
void enterDirectory(std::string& path, std::string_view name) {
    if (name.empty() || name == ".")
        return;
    if (name == "..")
        path.resize(path.empty() ? 0 : path.rfind('/'));
    else
        path.append("/").append(name);
}

}  // namespace

std::string nativePath(std::string_view path) {
    std::string native(path);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

std::string fullPath(std::string_view path) {
    std::string absolute = nativePath(path);
    if (absolute.empty())
        return {};
    if (absolute[0] != '/') {
        const std::string start = workingDirectory();
        if (start.empty())
            return {};
        absolute.insert(0, start);
    }
    const std::string_view rest = absolute;
    std::string result;
    for (std::size_t begin = 0; begin < rest.size();) {
        const std::size_t end = std::min(rest.find('/', begin), rest.size());
        enterDirectory(result, rest.substr(begin, end - begin));
        begin = end + 1;
    }
    if (result.empty() || rest.back() == '/')
        result += '/';
    return result;
}

std::vector<std::string> listFiles(std::string_view mask) {
    const std::string native = nativePath(mask);
    const std::size_t nameAt = native.rfind('/') + 1;  // 0 if there is no separator
    const std::string directory = nameAt == 0 ? "./" : native.substr(0, nameAt);
    const std::string_view pattern = std::string_view(native).substr(nameAt);

    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()), closedir);
    if (!entries)
        return names;
    while (const dirent* entry = readdir(entries.get()))
        if (matchesMask(entry->d_name, pattern))
            names.emplace_back(entry->d_name);
    // The order of a directory is arbitrary; sorted by bytes it is the same on every machine.
    std::sort(names.begin(), names.end());
    return names;
}

bool isWritableByAnyone(const std::string& path) {
    struct stat status;
    return stat(nativePath(path).c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0;
}

void temporaryDirectory(char* buffer, std::size_t size) {
    const char* setting = std::getenv("TMPDIR");
    const std::size_t length = setting ? std::strlen(setting) : 0;
    const char* end = length > 0 && setting[length - 1] == '/' ? "" : "/";
    if (length == 0 || length + std::strlen(end) >= size)
        std::snprintf(buffer, size, "/tmp/");
    else
        std::snprintf(buffer, size, "%s%s", setting, end);
}

}  // namespace Tarnkit::platform
