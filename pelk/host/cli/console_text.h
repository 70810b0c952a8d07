#pragma once

#include <string>
#include <string_view>

namespace Tarnkit {

/// What a piece of text is, which a terminal shows by its colour.
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

    /// The text with sequences for its colours.
    const std::string& getSequences() const { return text; }

private:
    std::string text;
};

/// "pelk: " and what is wrong.
ConsoleText complaint(std::string_view text);

enum class Stream { Output, Error };

/// Prints a text, in colours on terminals whose user wants them. Any thread may call; texts don't
/// mix. What goes to a stream that is closed is lost.
void print(Stream stream, const ConsoleText& text);

/// Prints a result on standard output, byte by byte as it is.
void printResult(std::string_view text);

/// Columns of the terminal that shows the stream; a guess if there is none.
int consoleWidth(Stream stream);

}  // namespace Tarnkit
