#pragma once

namespace Tarnkit {

// Small text files in the temporary directory, one for each id, named pelk_dbg_log_ and the id.
// A file is open for the length of a call alone, and a call that can't open it does nothing.

/// Makes an empty log, or empties it.
void clearDebugLog(int id);

/// Adds a text that is formatted as by printf, cut at 1,023 characters, with no line end added.
void appendDebugLog(int id, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The path of a log. False if it does not fit into `size` bytes.
bool getDebugLogPath(int id, char* buffer, int size);

/// The directory for temporary files without separators at its end, in `size` bytes; "C:" if the
/// system names none. A path that fills the buffer stands there cut.
void getTempDirectory(char* buffer, int size);

}  // namespace Tarnkit
