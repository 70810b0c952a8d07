#pragma once

#include <mutex>
#include <string>

#include "pelk/host/cli/console_text.h"

namespace Tarnkit {

/// Standard error for all threads of a command: whole lines of messages and, on a terminal, a
/// status line below them that is rewritten in place. A message is printed over the status line,
/// which then comes again below it.
class StatusLine {
public:
    StatusLine();
    /// Erases the status line.
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    bool isTerminal() const { return terminal; }
    /// Rewrites the status line, cut to the width of the terminal; an empty text erases it. Does
    /// nothing where standard error is no terminal.
    void show(std::string text);
    /// Prints a message; the end of the line is added.
    void print(const ConsoleText& text);

private:
    /// What overwrites the status line with blanks and goes back to its start.
    std::string erased() const;

    const bool terminal;
    std::mutex mutex;
    std::string shown;  // the status line; empty if there is none
};

}  // namespace Tarnkit
