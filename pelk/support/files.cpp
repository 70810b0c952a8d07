#include "pelk/support/files.h"

#include <filesystem>
#include <memory>
#include <string>

#include "pelk/base/text_or.h"
#include "pelk/platform/file.h"
#include "pelk/platform/output_file.h"

namespace Tarnkit {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestPath = 259;
constexpr std::size_t kBlockSize = 1024;

fs::path systemPath(const char* path) {
    return platform::nativePath(textOrEmpty(path));
}

/// Length of the part of a path that no directory is made for. The path has `\` alone.
std::size_t rootLength(const std::string& path) {
    std::size_t root = 0;
    if (path.size() > 2 && path[1] == ':' && path[2] == '\\')
        root = 2;
    else if (path.starts_with("\\\\"))
        root = path.find('\\', path.find_first_not_of('\\'));
    return path.find_first_not_of('\\', root);
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

std::FILE* openFile(const char* path, const char* mode) {
    return std::fopen(systemPath(path).c_str(), mode);
}

bool isDirectory(const char* path) {
    std::error_code error;
    return fs::is_directory(systemPath(path), error);
}

bool createDirectories(const char* path) {
    std::string whole = textOrEmpty(path);
    if (whole.empty() || whole.size() > kLongestPath)
        return false;
    for (char& c : whole)
        c = c == '/' ? '\\' : c;
    for (std::size_t end = whole.find('\\', rootLength(whole)); end != whole.npos;
         end = whole.find('\\', end + 1)) {
        std::error_code error;
        fs::create_directory(systemPath(whole.substr(0, end + 1).c_str()), error);
        if (error)
            return false;
    }
    return true;
}

bool copyFile(const char* from, const char* to) {
    std::error_code error;
    return fs::copy_file(systemPath(from), systemPath(to), fs::copy_options::overwrite_existing,
                         error);
}

bool copyFileBytes(const char* from, const char* to) {
    // Asked before it is opened: a named pipe would wait for its writer.
    std::error_code none;
    if (!fs::is_regular_file(systemPath(from), none))
        return false;
    const std::unique_ptr<std::FILE, CloseFile> source(openFile(from, "rb"));
    if (!source)
        return false;
    platform::OutputFile target(textOrEmpty(to));
    char block[kBlockSize];
    while (const std::size_t count = std::fread(block, 1, sizeof block, source.get()))
        target.write(block, count);
    return !std::ferror(source.get()) && target.commit();
}

bool moveFile(const char* from, const char* to) {
    std::error_code error;
    fs::rename(systemPath(from), systemPath(to), error);
    return !error;
}

bool deleteFile(const char* path) {
    std::error_code error;
    const fs::path name = systemPath(path);
    return !fs::is_directory(fs::symlink_status(name, error)) && fs::remove(name, error);
}

}  // namespace Tarnkit
