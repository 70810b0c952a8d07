#include "pelk/platform/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "pelk/platform/file.h"

namespace Tarnkit::platform {

namespace {

/// Opens a plain file. -1 on failure, with the reason in `errno`: 0 if it is something else.
int openPlain(const char* path, std::uint64_t& size) {
    struct stat status;
    if (stat(path, &status) != 0)
        return -1;
    errno = 0;
    if (!S_ISREG(status.st_mode))
        return -1;
    // Not to wait, and asked again once it is open: the name may have changed hands by now.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor >= 0 && (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
        close(descriptor);
        errno = 0;
        return -1;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return descriptor;
}

}  // namespace

InputFile::InputFile(const std::string& path) : name(nativePath(path)) {
    descriptor = openPlain(name.c_str(), size);
    if (descriptor < 0)
        fail(errno, "it is no plain file");
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

/// Notes the system's number of what went wrong, or `words` if that is 0.
bool InputFile::fail(int reason, const char* words) {
    constexpr int kSystemFaults[] = {EIO, EMFILE, ENFILE, ENOMEM, ESTALE};
    systemFault = std::find(std::begin(kSystemFaults), std::end(kSystemFaults), reason) !=
                  std::end(kSystemFaults);
    error = "cannot read \"" + name + "\": " + (reason == 0 ? words : std::strerror(reason));
    return false;
}

}  // namespace Tarnkit::platform
