#include "pelk/support/paths.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "pelk/platform/file.h"
#include "pelk/support/bounded_text.h"

namespace Tarnkit {

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

bool isAbsolutePath(const char* path) {
    const std::string_view text = path;
    return text.starts_with("\\\\") || text.starts_with("//") ||
           (text.size() >= 2 && text[1] == ':');
}

bool isRelativePath(const char* path) {
    return !isAbsolutePath(path);
}

void joinPath(char* path, const char* name, int size) {
    if (*name)
        addTrailingSeparator(path, size);
    BoundedText(path, size, std::strlen(path)).append(isSeparator(*name) ? name + 1 : name);
}

void addTrailingSeparator(char* path, int size) {
    const std::size_t length = std::strlen(path);
    if (length > 0 && !isSeparator(path[length - 1]))
        BoundedText(path, size, length).append("\\");
}

void removeTrailingSeparators(char* path, int size) {
    if (size < 1)
        return;
    std::size_t length = std::find(path, path + size, '\0') - path;
    if (length == static_cast<std::size_t>(size))
        return;
    while (length > 1 && isSeparator(path[length - 1]))
        path[--length] = 0;
}

void collapseSeparators(char* path) {
    char* end = path;
    for (const char* from = path; *from; ++from) {
        if (!isSeparator(from[0]) || !isSeparator(from[1]))
            *end++ = *from;
    }
    *end = 0;
}

void sanitizeName(const char* src, char* dst) {
    for (; *src; ++src)
        *dst++ = isNameCharacter(*src) ? *src : '_';
    *dst = 0;
}

bool enterFileDirectory(const char* path, char* dir, int size) {
    BoundedText result(dir, size);
    // Behind the last separator of an absolute path stands the file; an empty path has none.
    std::string directory = platform::fullPath(path);
    directory.resize(directory.rfind('/') + 1);
    std::error_code error;
    if (directory.empty() || directory.size() >= static_cast<std::size_t>(std::max(size, 0)))
        return false;
    std::filesystem::current_path(directory, error);
    if (!error)
        result.append(directory);
    return !error;
}

}  // namespace Tarnkit
