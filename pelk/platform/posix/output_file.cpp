#include "pelk/platform/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "pelk/platform/file.h"

namespace Tarnkit::platform {

namespace {

/// A hidden name in the directory of `target`, with its ending, that no other call and no other
/// process chooses.
std::string nameBeside(const std::string& target) {
    static constinit std::atomic<unsigned> number{0};
    const std::size_t nameAt = target.rfind('/') + 1;  // 0 if there is no separator
    const std::size_t dot = target.rfind('.');
    const bool hasEnding = dot != std::string::npos && dot > nameAt;
    const std::string stem = target.substr(nameAt, hasEnding ? dot - nameAt : std::string::npos);
    return target.substr(0, nameAt) + "." + stem + "." + std::to_string(getpid()) + "-" +
           std::to_string(number++) + (hasEnding ? target.substr(dot) : "");
}

/// The file that a path leads to through symbolic links, whether it exists or not. Links that lead
/// in a circle give the path itself.
std::string followLinks(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code none;
    fs::path place = path;
    for (int links = 0; fs::is_symlink(place, none); ++links) {
        if (links == 40)
            return path;
        place = place.parent_path() / fs::read_symlink(place, none);
    }
    return place.string();
}

/// The number of what has just failed, never 0.
int lastError() {
    return errno != 0 ? errno : EIO;
}

/// Name of the temporary file that was made last, while it is there.
constinit std::atomic<const char*> unfinished{nullptr};

}  // namespace

OutputFile::OutputFile(const std::string& path) : target(followLinks(nativePath(path))) {
    struct stat status;
    errno = 0;
    if (stat(target.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        error = "cannot write \"" + target + "\": it is there and not a plain file";
        return;
    }
    if (errno == ELOOP) {
        fail("write", target);
        return;
    }
    const std::string name = nameBeside(target);
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        fail("create", name);
        return;
    }
    temporaryName = name;
    unfinished = temporaryName.c_str();
    stream = fdopen(descriptor, "wb");
    if (!stream) {
        fail("write", name);
        close(descriptor);
    }
}

OutputFile::~OutputFile() {
    drop();
}

void OutputFile::write(const void* data, std::size_t size) {
    if (failure == 0 && stream && std::fwrite(data, 1, size, stream) != size)
        failure = lastError();
}

void OutputFile::seek(std::int64_t place) {
    if (failure == 0 && stream && fseeko(stream, place, SEEK_SET) != 0)
        failure = lastError();
}

/// Closes the file. False, with the reason in `errno`, if some of it is not on the disk.
bool OutputFile::finish() {
    if (failure == 0 && (std::fflush(stream) != 0 || fsync(fileno(stream)) != 0))
        failure = lastError();
    if (std::fclose(stream) != 0 && failure == 0)
        failure = lastError();
    stream = nullptr;
    errno = failure;
    return failure == 0;
}

bool OutputFile::commit() {
    if (temporaryName.empty())
        return false;
    // Synced before it is renamed: after a power cut the name must not stand for an empty file.
    if (!finish())
        return fail("write", temporaryName);
    if (std::rename(temporaryName.c_str(), target.c_str()) != 0)
        return fail("replace", target);
    unfinished = nullptr;
    temporaryName.clear();
    return true;
}

/// Notes what the system refused and drops the temporary file.
bool OutputFile::fail(const char* what, const std::string& path) {
    const int reason = errno;
    error = std::string("cannot ") + what + " \"" + path + "\": " + std::strerror(reason);
    drop();
    return false;
}

void OutputFile::drop() {
    if (stream)
        std::fclose(stream);
    stream = nullptr;
    if (temporaryName.empty())
        return;
    unlink(temporaryName.c_str());
    unfinished = nullptr;
    temporaryName.clear();
}

void dropUnfinishedOutput() {
    if (const char* const name = unfinished)
        unlink(name);
}

}  // namespace Tarnkit::platform
