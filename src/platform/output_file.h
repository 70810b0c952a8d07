#pragma once

#include <string>

#include "platform/api.h"

namespace Tarnkit::platform {

/// An output file that appears whole or not at all. It is written under a temporary name beside
/// its target and takes the target's name at the end. Dropped without `commit`, it leaves
/// nothing behind, and an older target stands untouched.
class PELK_API OutputFile {
public:
    /// Makes the empty temporary file. If that fails, or if the target is there and no plain
    /// file, `getTemporaryName` is empty and `getError` says why.
    explicit OutputFile(const std::string& target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write. Keeps the ending of the target's name, so that writers that choose a
    /// format by it choose the same.
    const std::string& getTemporaryName() const { return temporaryName; }
    const std::string& getError() const { return error; }

    /// Brings the content safely to disk and moves it to the target's name. False on failure,
    /// with words in `getError`; the temporary file is gone then.
    bool commit();

private:
    bool fail(const char* what, const std::string& path);

    std::string target;
    std::string temporaryName;
    std::string error;
};

}  // namespace Tarnkit::platform
