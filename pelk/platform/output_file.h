#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// An output file that appears whole or not at all: whoever watches for the picture never reads
/// half of it, and a render that is stopped or runs out of disk leaves the older picture untouched.
/// It is written under a temporary name beside its target, on the same disk, and renamed by
/// `commit`. Destroyed without `commit`, it leaves nothing behind. A target that is a symbolic link
/// stays one: the file that it leads to is replaced. For one thread at a time.
class PELK_API OutputFile {
public:
    /// Makes the empty temporary file. If that fails, or if the target is there and no plain
    /// file, or may not be written, `getTemporaryName` is empty and `getError` says why.
    explicit OutputFile(const std::string& target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write. Keeps the ending of the target's name, so that writers that choose a
    /// format by it choose the same.
    const std::string& getTemporaryName() const { return temporaryName; }
    const std::string& getError() const { return error; }

    /// Writes where the last write or seek ended. The first failure is kept for `commit`; what
    /// comes after it is dropped without a word, so that a writer need not look.
    void write(const void* data, std::size_t size);
    /// Goes to a place from the start, which may lie behind the end.
    void seek(std::int64_t place);

    /// Brings the content safely to disk and moves it to the target's name, which is on disk as
    /// well when this returns: after a power cut there is the old file or the new one. False on
    /// failure, with words in `getError`, if any write failed too; the temporary file is gone then.
    bool commit();

private:
    bool finish();
    bool fail(const char* what, const std::string& path);
    void drop();

    std::string target;
    std::string temporaryName;
    std::string error;
    std::FILE* stream = nullptr;  ///< open as long as there is a temporary name
    int failure = 0;              ///< the system's number of the first write that failed
};

/// Deletes the temporary file that was made last, if it is still there. Meant for a signal handler
/// that ends the program.
PELK_API void dropUnfinishedOutput();

}  // namespace Tarnkit::platform
