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
    virtual bool getWindow(ConsoleWindow& window) const = 0;
    virtual unsigned getAttributes() const = 0;
    /// Holds for what is written from now on.
    virtual void setAttributes(unsigned attributes) = 0;
    virtual void write(const char* text, std::size_t length) = 0;
};

/// The console in use.
PELK_API Console& console();

/// The standard error, for text that must not mix with results on the standard output.
PELK_API Console& errorConsole();

/// Replaces the one in use, null puts the standard output back.
PELK_API void setConsole(Console* replacement);

/// Gives standard streams that the caller of the program has closed a place where what is printed
/// is lost; else the next file to be opened would get it. To be called first of all.
PELK_API void fillClosedStreams();

/// Writes out what the standard output still holds back. False if any of what was printed there,
/// by whatever road, did not arrive; `error` has the system's words then. A stream that was closed
/// from the start was given up on purpose and counts as good.
PELK_API bool finishStandardOutput(std::string& error);

/// The sequence by which a terminal takes on these attributes, in `buffer` of at least 32 bytes.
PELK_API void terminalSequence(unsigned attributes, char* buffer, std::size_t size);

}  // namespace Tarnkit::platform
