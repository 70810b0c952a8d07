#pragma once

#include <cstddef>
#include <string>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

// Attributes of a character on the console: the colours of the text, and of its background
// four bits higher.
inline constexpr unsigned kConsoleBlue = 0x1;
inline constexpr unsigned kConsoleGreen = 0x2;
inline constexpr unsigned kConsoleRed = 0x4;
inline constexpr unsigned kConsoleIntensity = 0x8;
/// Plain text, in the terminal's own colours.
inline constexpr unsigned kConsoleDefault = kConsoleBlue | kConsoleGreen | kConsoleRed;

/// The part of the console that is seen, in characters; all four are inside it.
struct ConsoleWindow {
    int left, top, right, bottom;
};

/// Where text for the user goes. A test puts a recorder in the place of the standard output.
class PELK_API Console {
public:
    virtual ~Console() = default;
    /// False if there is nowhere to write.
    virtual bool isValid() const = 0;
    /// True if a user looks at it, false for a file or a pipe.
    virtual bool isTerminal() const = 0;
    /// False, with `window` untouched, if there is no terminal to be seen.
    virtual bool getWindow(ConsoleWindow& window) const = 0;
    /// The attributes that the next text will have.
    virtual unsigned getAttributes() const = 0;
    /// Holds for what is written from now on.
    virtual void setAttributes(unsigned attributes) = 0;
    /// Writes `length` bytes at once, past any buffer, behind all that was printed before.
    virtual void write(const char* text, std::size_t length) = 0;
};

/// The console in use.
PELK_API Console& console();

/// The standard error, for text that must not mix with results on the standard output.
PELK_API Console& errorConsole();

/// Replaces the one in use, which must stay valid as long; null puts the standard output back.
PELK_API void setConsole(Console* replacement);

/// Opens standard input, output and error on the null device where the program was started with
/// one of them closed. The number of a closed stream goes to the next file that is opened, and
/// what is then printed would be written into a picture. To be called first of all in `main`.
PELK_API void fillClosedStreams();

/// Flushes the standard output. False if any of what was printed there, now or before, through
/// the C library or through a Console, did not arrive, as on a full disk; `error` has the system's
/// words then. For the end of `main`, whose exit code must tell of that. An output that was closed
/// from the start was closed on purpose and counts as good, and so does a reader that has gone: it
/// had what it wanted.
PELK_API bool finishStandardOutput(std::string& error);

/// Writes the ANSI escape sequence that switches a terminal to these attributes into `buffer`, as a
/// terminated text. `size`: bytes of the buffer, at least 32.
PELK_API void terminalSequence(unsigned attributes, char* buffer, std::size_t size);

}  // namespace Tarnkit::platform
