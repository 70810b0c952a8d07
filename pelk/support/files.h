#pragma once

#include <cstdio>

namespace Tarnkit {

// Files by name. Names are texts of bytes, UTF-8 by custom, with `/` or `\` as separators; the
// bytes reach the system as they are, so a name in another encoding works too. Failure is told by
// the result alone. A null or empty path fails. Any thread may call.

/// Opens a file as std::fopen does, `mode` included; the caller closes it. Null on failure, with
/// the reason in `errno`. Opening a named pipe waits for whoever holds its other end.
std::FILE* openFile(const char* path, const char* mode);

/// True if something stands at `path` and is a directory; a link counts as what it leads to.
bool isDirectory(const char* path);

/// Makes the directories of a path, each that is missing, up to the last separator: what stands
/// behind that is taken for a file's name. So "a/b/file.exr" and "a/b/" both make "a" and "a/b", a
/// new directory named at the end needs a separator there. A drive ("x:\") or server ("\\server\")
/// at the start is taken to exist.
/// False at the first directory that can't be made; those before it stay. Paths above 259 bytes
/// fail at once, the limit of the systems that this interface comes from: for the longer paths of
/// others use std::filesystem.
bool createDirectories(const char* path);

/// Copies a plain file by the system's own means, with its permissions, over one that may stand
/// there. False on failure; what stood at `to` may be gone then.
bool copyFile(const char* from, const char* to);

/// Copies a plain file by reading and writing, in blocks of 1,024 bytes, without permissions. The
/// copy appears whole or not at all: on failure, a full disk included, what stood at `to` still
/// does. False if either is there and no plain file.
bool copyFileBytes(const char* from, const char* to);

/// Gives a file or directory another name on the same disk, in one step. A file that stands at `to`
/// is replaced. False on failure, which changes nothing.
bool moveFile(const char* from, const char* to);

/// Deletes a file, or a link but not what it leads to. False if there is none, or if it is a
/// directory.
bool deleteFile(const char* path);

}  // namespace Tarnkit
