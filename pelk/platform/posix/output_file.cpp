#include "pelk/platform/output_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "pelk/platform/file.h"
#include "pelk/platform/system_info.h"

namespace Tarnkit::platform {

namespace {

/// Where the name begins in a path.
std::size_t nameOffset(const std::string& path) {
    return path.rfind('/') + 1;  // 0 if there is no separator
}

/// A number that no other process draws, on whatever machine it runs.
unsigned randomNumber() {
    unsigned number = 0;
    const bool drawn = getrandom(&number, sizeof number, GRND_NONBLOCK) == sizeof number;
    return drawn ? number : static_cast<unsigned>(std::time(nullptr));
}

/// What tells the temporary files of all writers apart: several machines may write to one
/// directory, and containers share both name and process number.
std::string writerName() {
    static constinit std::atomic<unsigned> count{0};
    char host[32];
    if (!computerName(host, sizeof host))
        host[0] = '\0';  // no name, or a longer one
    char text[96];
    std::snprintf(text, sizeof text, "%s-%d-%u-%08x", host, static_cast<int>(getpid()), count++,
                  randomNumber());
    return text;
}

/// The longest name that a file beside `target` may have: what the file system takes, and what is
/// left of the longest path. At least as long as the target's own where that one is allowed.
std::size_t longestNameBeside(const std::string& target) {
    constexpr long kUsualName = 255;
    const std::size_t nameAt = nameOffset(target);
    const std::string directory = nameAt == 0 ? "." : target.substr(0, nameAt);
    const long name = pathconf(directory.c_str(), _PC_NAME_MAX);
    const std::size_t path = nameAt < PATH_MAX ? PATH_MAX - 1 - nameAt : 0;
    return std::min(static_cast<std::size_t>(name > 0 ? name : kUsualName), path);
}

/// A hidden name in the directory of `target`, with its ending, that no other call, process or
/// machine chooses. Where the system takes none that is as long as that, first the target's name in
/// it is cut, then a random number alone stands there.
std::string nameBeside(const std::string& target) {
    constexpr std::size_t kLongestEnding = 16;
    const std::size_t nameAt = nameOffset(target);
    const std::size_t dot = target.rfind('.');
    const bool hasEnding =
        dot != std::string::npos && dot > nameAt && target.size() - dot <= kLongestEnding;
    const std::string ending = hasEnding ? target.substr(dot) : "";
    const std::string stem = target.substr(nameAt, hasEnding ? dot - nameAt : std::string::npos);
    const std::string writer = writerName();
    const std::size_t longest = longestNameBeside(target);
    const std::size_t others = writer.size() + ending.size() + 2;  // with the two dots
    const std::string start = target.substr(0, nameAt) + ".";
    if (others <= longest)
        return start + stem.substr(0, longest - others) + "." + writer + ending;
    char number[16];
    std::snprintf(number, sizeof number, "%x", randomNumber());
    const std::size_t room = longest > ending.size() + 1 ? longest - ending.size() - 1 : 1;
    return start + std::string(number).substr(0, room) + ending;
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

/// Brings a changed name of a directory to disk. False, with the reason in `errno`, if that failed;
/// a directory that may be written but not read, and a file system that has no such operation,
/// count as done.
bool syncDirectoryOf(const std::string& path) {
    const std::size_t nameAt = nameOffset(path);
    const std::string directory = nameAt == 0 ? "." : path.substr(0, nameAt);
    const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno == EACCES;
    const bool synced = fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return synced;
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
    // A name that can't be, by its length or a ring of links, is found out now and not after the
    // render. And renaming would replace a file that its owner has protected from writing.
    if (errno != ENOENT && (errno != 0 || access(target.c_str(), W_OK) != 0)) {
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
    return syncDirectoryOf(target) || fail("be sure that the disk holds", target);
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
