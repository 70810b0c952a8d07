#include "pelk/platform/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "pelk/platform/file.h"

namespace Tarnkit::platform {

namespace {

/// What a name stands for, if it is no plain file.
const char* kindWords(mode_t mode) {
    if (S_ISDIR(mode))
        return "it is a directory and no plain file";
    if (S_ISFIFO(mode))
        return "it is a pipe and no plain file";
    return S_ISSOCK(mode) ? "it is a socket and no plain file" : "it is a device and no plain file";
}

/// Opens a plain file. -1 on failure, with the reason in `errno`; 0 there if it is something else,
/// as `words` tell.
int openPlain(const char* path, std::uint64_t& size, const char*& words) {
    struct stat status;
    if (stat(path, &status) != 0)
        return -1;
    errno = 0;
    words = kindWords(status.st_mode);
    if (!S_ISREG(status.st_mode))
        return -1;
    // Not to wait, and asked again once it is open: the name may have changed hands by now.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor >= 0 && (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
        words = kindWords(status.st_mode);
        close(descriptor);
        errno = 0;
        return -1;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return descriptor;
}

/// The descriptor that a name stands for; -1 for any other name.
int streamOf(const std::string& path) {
    constexpr std::string_view kDirectory = "/dev/fd/";
    if (path == "-" || path == "/dev/stdin")
        return STDIN_FILENO;
    if (!path.starts_with(kDirectory))
        return -1;
    int number = -1;
    const char* const end = path.data() + path.size();
    const auto [rest, fault] = std::from_chars(path.data() + kDirectory.size(), end, number);
    return fault == std::errc() && rest == end ? number : -1;
}

/// Asks what a name leads to.
bool findFile(const std::string& path, struct stat& status) {
    const int stream = streamOf(path);
    return (stream >= 0 ? fstat(stream, &status) : stat(nativePath(path).c_str(), &status)) == 0;
}

}  // namespace

InputFile::InputFile(const std::string& path) : name(nativePath(path)) {
    const char* words = nullptr;
    descriptor = openPlain(name.c_str(), size, words);
    if (descriptor >= 0)
        return;
    missing = errno == ENOENT || errno == ENOTDIR;
    fail(errno, words);
}

InputFile::~InputFile() {
    if (descriptor >= 0)
        close(descriptor);
}

bool InputFile::read(std::uint64_t place, void* data, std::size_t count) {
    char* at = static_cast<char*>(data);
    while (count > 0) {
        const ssize_t got = pread(descriptor, at, count, static_cast<off_t>(place));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return fail(got < 0 ? errno : 0, "it ends too early");
        at += got;
        place += static_cast<std::uint64_t>(got);
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

bool InputFile::readAll(std::string& content) {
    if (!isOpen())
        return false;
    content.resize(static_cast<std::size_t>(size));
    return read(0, content.data(), content.size());
}

/// Notes the system's number of what went wrong, or `words` if that is 0.
bool InputFile::fail(int number, const char* words) {
    constexpr int kSystemFaults[] = {EIO, EMFILE, ENFILE, ENOMEM, ESTALE};
    systemFault = std::find(std::begin(kSystemFaults), std::end(kSystemFaults), number) !=
                  std::end(kSystemFaults);
    reason = number == 0 ? words : std::strerror(number);
    error = "cannot read \"" + name + "\": " + reason;
    return false;
}

bool isOpenStream(const std::string& path) {
    return streamOf(path) >= 0;
}

bool readOpenStream(const std::string& path, std::uint64_t most, std::string& content,
                    std::string& reason) {
    char buffer[1 << 16];
    content.clear();
    for (;;) {
        const ssize_t got = ::read(streamOf(path), buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got == 0)
            return true;
        const bool fits = got > 0 && content.size() + static_cast<std::size_t>(got) <= most;
        if (!fits) {
            reason = got < 0 ? std::strerror(errno)
                             : "there is more than " + std::to_string(most) + " bytes of it";
            return false;
        }
        content.append(buffer, static_cast<std::size_t>(got));
    }
}

bool isSameFile(const std::string& a, const std::string& b) {
    struct stat first, second;
    return findFile(a, first) && findFile(b, second) && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

}  // namespace Tarnkit::platform
