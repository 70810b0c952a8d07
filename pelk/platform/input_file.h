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
    /// Bytes of the file when it was opened.
    std::uint64_t getSize() const { return size; }

    /// Reads `count` bytes from `place` on. False, with words in `getError`, if not all of them are
    /// there or the system fails; `data` may then be written in part.
    bool read(std::uint64_t place, void* data, std::size_t count);

    /// What went wrong last, with the file's name; empty at first.
    const std::string& getError() const { return error; }
    /// Whether that was a failure of the system (a disk, a network, too many open files) and not of
    /// the name or the content, so that the same may succeed later.
    bool isSystemFault() const { return systemFault; }

private:
    bool fail(int reason, const char* words);

    std::string name;
    std::string error;
    std::uint64_t size = 0;
    int descriptor = -1;
    bool systemFault = false;
};

}  // namespace Tarnkit::platform
