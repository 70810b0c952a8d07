#pragma once

#include <string>
#include <string_view>

namespace Tarnkit {

/// What a piece of text is to its reader; a terminal shows each by a colour of its own.
enum class Tone { Plain, Heading, Good, Detail, Warning, Error };

/// Text for people, in pieces of one tone each.
class ConsoleText {
public:
    ConsoleText() = default;
    ConsoleText(const char* plain) { add(plain); }
    ConsoleText(const std::string& plain) { add(plain); }

    /// Adds a piece. The text may be anybody's, such as a file name: its escape characters are
    /// shown as `?`, so that it can't command the terminal.
    ConsoleText& add(std::string_view piece, Tone tone = Tone::Plain);
    /// Adds plain text that is formatted as by printf, of any length.
    ConsoleText& addf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    ConsoleText& append(const ConsoleText& other);

    /// The text with escape sequences for its colours, as tarnkit_cprint takes it.
    const std::string& getSequences() const { return text; }

private:
    std::string text;
};

/// The start of every message about what is wrong: "pelk: " and `text`, as messageText shows it.
ConsoleText complaint(std::string_view text);

enum class Stream { Output, Error };

/// Prints a text, in colours on terminals whose user wants them. Any thread may call: a lock keeps
/// the texts of two threads apart. What goes to a stream that is closed is lost.
void print(Stream stream, const ConsoleText& text);

/// Prints a result on standard output, byte by byte: another program may read it, so nothing in it
/// is taken for a colour.
void printResult(std::string_view text);

/// Columns of the terminal that shows the stream; what was last known, 80 at first, if there is
/// none.
int consoleWidth(Stream stream);

}  // namespace Tarnkit
