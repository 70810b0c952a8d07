#include "pelk/support/debug_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

#include "pelk/platform/file.h"
#include "pelk/support/bounded_format.h"
#include "pelk/support/files.h"

namespace Tarnkit {

namespace {

constexpr int kPathSize = 4096;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File openLog(int id, const char* mode) {
    char path[kPathSize + 32];
    if (!getDebugLogPath(id, path, sizeof path))
        return nullptr;
    return File(openFile(path, mode));
}

bool isSeparator(char character) {
    return character == '/' || character == '\\';
}

}  // namespace

void clearDebugLog(int id) {
    openLog(id, "wt");
}

void appendDebugLog(int id, const char* format, ...) {
    const File file = openLog(id, "at");
    if (!file)
        return;
    char text[1024] = "";
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fputs(text, file.get());
}

bool getDebugLogPath(int id, char* buffer, int size) {
    char directory[kPathSize];
    getTempDirectory(directory, sizeof directory);
    return boundedFormat(buffer, size, "%s%spelk_dbg_log_%d", directory, "\\", id) >= 0;
}

void getTempDirectory(char* buffer, int size) {
    if (size < 1)
        return;
    char path[kPathSize];
    platform::temporaryDirectory(path, sizeof path);
    std::size_t length = std::strlen(path);
    // With its end it must leave a byte free: a path that fills the buffer stays as it is.
    const bool fits = length + 1 < static_cast<std::size_t>(size);
    // A path of the root alone keeps its separator.
    while (fits && length > 1 && isSeparator(path[length - 1]))
        path[--length] = 0;
    std::snprintf(buffer, size, "%s", length > 0 ? path : "C:");
}

}  // namespace Tarnkit
