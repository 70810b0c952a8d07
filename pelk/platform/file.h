#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A file name in the form that the system takes: its own separator for each `/` and `\`. Every
/// file name passes through here on its way to the system; no other place changes separators.
PELK_API std::string nativePath(std::string_view path);

/// The absolute form of a path, by its text alone: the working directory in front if it is
/// relative, no `.` and `..`, single separators. Looks at no file and follows no link. A
/// separator at the end stays. Empty if `path` is empty or the working directory is unknown.
PELK_API std::string fullPath(std::string_view path);

/// The names, without directory, of the entries that match `mask`: a directory, which may be
/// missing, and a pattern in which `*` stands for any text and `?` for any one byte. Entries of
/// every kind count, `.` and `..` and names that start with a dot too. Sorted by byte values;
/// empty if nothing matches or the directory can't be read.
PELK_API std::vector<std::string> listFiles(std::string_view mask);

/// Whether any user of the machine may change what a name leads to: a file, or a directory, into
/// which they could put files then. False of what isn't there.
PELK_API bool isWritableByAnyone(const std::string& path);

/// True if all of `name` matches the pattern, byte by byte, upper and lower case apart.
PELK_API bool matchesMask(std::string_view name, std::string_view pattern);

/// The directory for temporary files, ending in its separator, as a terminated text in `buffer`.
/// A setting of the environment that does not fit falls back on the system's. Does not allocate.
PELK_API void temporaryDirectory(char* buffer, std::size_t size);

}  // namespace Tarnkit::platform
