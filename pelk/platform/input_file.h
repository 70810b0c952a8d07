#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A plain file, open for reading. What else a name may stand for is refused before it is opened: a
/// pipe would wait for its writer, and to open a device can be an action. Takes no memory for what
/// it reads. Its operations may not overlap.
class PELK_API InputFile {
public:
    /// On failure `isOpen` is false and `getError` says why.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool isOpen() const { return descriptor >= 0; }
    /// True if it isn't open because there is nothing of that name, which a caller may forgive;
    /// false where something is there that can't be read.
    bool isMissing() const { return missing; }
    /// Bytes of the file when it was opened.
    std::uint64_t getSize() const { return size; }

    /// Reads `count` bytes from `place` on. False, with words in `getError`, if not all of them are
    /// there or the system fails; `data` may then be written in part.
    bool read(std::uint64_t place, void* data, std::size_t count);
    /// Reads all of it. False as above, and where the file isn't open.
    bool readAll(std::string& content);

    /// What went wrong last, with the file's name; empty at first.
    const std::string& getError() const { return error; }
    /// The same without the name, for a message that has named the file already.
    const std::string& getReason() const { return reason; }
    /// Whether that was a failure of the system (a disk, a network, too many open files) and not of
    /// the name or the content, so that the same may succeed later.
    bool isSystemFault() const { return systemFault; }

private:
    bool fail(int number, const char* words);

    std::string name;
    std::string error, reason;
    std::uint64_t size = 0;
    int descriptor = -1;
    bool missing = false;
    bool systemFault = false;
};

/// Whether a name stands for a stream that was open when the program started: `-` and /dev/stdin,
/// the standard input, and /dev/fd/N, which shells put in the place of a command's output.
PELK_API bool isOpenStream(const std::string& path);

/// Reads such a stream to its end, and waits for its writer. Takes `most` bytes at most. False
/// where there is more or it can't be read; `reason` then says so, without the name.
PELK_API bool readOpenStream(const std::string& path, std::uint64_t most, std::string& content,
                             std::string& reason);

/// Whether two names lead to one file, through links of either kind: what is written to one is then
/// read from the other. False if either leads nowhere. The names of open streams count as well.
PELK_API bool isSameFile(const std::string& a, const std::string& b);

}  // namespace Tarnkit::platform
