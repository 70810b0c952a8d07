#include "platform/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/file.h"

namespace Tarnkit::platform {

namespace {

/// A name in the directory of `target` with its ending, different at each call and process.
std::string nameBeside(const std::string& target) {
    static constinit std::atomic<unsigned> number{0};
    const std::size_t nameAt = target.rfind('/') + 1;  // 0 if there is no separator
    const std::size_t dot = target.rfind('.');
    const bool hasEnding = dot != std::string::npos && dot > nameAt;
    const std::string stem = target.substr(nameAt, hasEnding ? dot - nameAt : std::string::npos);
    return target.substr(0, nameAt) + "." + stem + "." + std::to_string(getpid()) + "-" +
           std::to_string(number++) + (hasEnding ? target.substr(dot) : "");
}

bool syncFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = fsync(descriptor) == 0;
    return close(descriptor) == 0 && synced;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : target(nativePath(path)) {
    struct stat status;
    if (stat(target.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        error = "cannot write \"" + target + "\": it is there and not a plain file";
        return;
    }
    const std::string name = nameBeside(target);
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        fail("create", name);
        return;
    }
    close(descriptor);
    temporaryName = name;
}

OutputFile::~OutputFile() {
    if (!temporaryName.empty())
        unlink(temporaryName.c_str());
}

bool OutputFile::commit() {
    if (temporaryName.empty())
        return false;
    // Synced before it is renamed: after a power cut the name must not stand for an empty file.
    if (!syncFile(temporaryName))
        return fail("write", temporaryName);
    if (std::rename(temporaryName.c_str(), target.c_str()) != 0)
        return fail("replace", target);
    temporaryName.clear();
    return true;
}

/// Notes what the system refused and drops the temporary file.
bool OutputFile::fail(const char* what, const std::string& path) {
    const int reason = errno;
    error = std::string("cannot ") + what + " \"" + path + "\": " + std::strerror(reason);
    if (!temporaryName.empty())
        unlink(temporaryName.c_str());
    temporaryName.clear();
    return false;
}

}  // namespace Tarnkit::platform
