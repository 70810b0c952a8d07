#pragma once

namespace Tarnkit {

// Small text files in the temporary directory, one for each id, named pelk_dbg_log_ and the id:
// where a library leaves messages for its developers without a console. Each call opens its file,
// writes and closes it again, so that nothing is lost if the program crashes right after, and a
// call that can't open it does nothing: a report must not stop what it reports on. There is no
// state and no lock. Texts of two threads don't mix inside one call, but their order is that of the
// calls.

/// Makes an empty log, or empties it.
void clearDebugLog(int id);

/// Adds a text that is formatted as by printf, cut at 1,023 characters, with no line end added.
void appendDebugLog(int id, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The path of a log, whether or not there is such a file. False if it does not fit into `size`
/// bytes; the buffer then holds what fits. A `\` stands before the name on every system, and
/// platform::nativePath turns it into what the system takes.
bool getDebugLogPath(int id, char* buffer, int size);

/// The directory for temporary files (TMPDIR, else the system's) without separators at its end, in
/// `size` bytes; "C:" if the system names none. A path that fills the buffer with its end keeps
/// them, and a longer one stands there cut.
void getTempDirectory(char* buffer, int size);

}  // namespace Tarnkit
