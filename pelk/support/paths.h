#pragma once

namespace Tarnkit {

// Paths as texts. But for enterFileDirectory nothing here asks the system anything, so the answers
// are the same on every machine. Both `/` and `\` separate, whatever the system takes, and `\` is
// what gets added: platform::nativePath turns it into the system's own separator on the way to a
// file. Bytes from 128 up pass as they are.
//
// `size`: the bytes of a buffer that is changed in place, its terminated text included. What does
// not fit is cut at the end and the text stays terminated; a size below 1 writes nothing. No path
// may be null. Calls on different buffers may overlap.

/// True for a path that begins with `\\` or `//`, or has `:` as its second character. The test is
/// that of systems with drives: "/tmp/a", which begins at a root but names no drive, is relative.
bool isAbsolutePath(const char* path);
/// The opposite; an empty path is relative.
bool isRelativePath(const char* path);

/// Adds a name behind a path, with one separator between: a `\` is added unless `path` is empty or
/// ends in a separator, or `name` is empty, and one separator at the start of `name` is left out.
/// A `name` with drive or server is added like any other text.
void joinPath(char* path, const char* name, int size);

/// Adds a `\` unless the path is empty or ends in a separator. A path that fills its buffer stays.
void addTrailingSeparator(char* path, int size);

/// Takes all separators off the end, but never the first character: "/" stays what it is. What
/// stands behind `size` bytes is not looked at.
void removeTrailingSeparators(char* path, int size);

/// Leaves the last of each run of separators: "a\//b" becomes "a/b". The two at the start of a
/// server's name become one too, so this is for the part behind it.
void collapseSeparators(char* path);

/// Makes a text into a name for files, variables and the like: every byte that is no ASCII letter
/// or digit becomes `_`, so a letter of two bytes becomes two of them. `dst` has room for the text
/// of `src` with its end, and may be `src`.
void sanitizeName(const char* src, char* dst);

/// Makes the directory in which a file lies the working directory of the whole process, for every
/// thread, and writes its absolute path, which ends in a separator, to `dir`. The file itself need
/// not exist. False, with an empty `dir` and nothing changed, if `path` is empty, if the directory
/// can't be entered, or if its path does not fit into `size` bytes: half a path is another one.
bool enterFileDirectory(const char* path, char* dir, int size);

}  // namespace Tarnkit
