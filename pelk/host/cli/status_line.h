#pragma once

#include <mutex>
#include <string>

#include "pelk/host/cli/console_text.h"

namespace Tarnkit {

/// Standard error, for all threads: whole lines of text and, on a terminal, a line below them that
/// is rewritten in place.
class StatusLine {
public:
    StatusLine();
    /// Takes the line below away.
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    bool isTerminal() const { return terminal; }
    /// Rewrites the line below, cut to the width of the terminal. Does nothing where there is none.
    void show(std::string text);
    /// Prints a line of text.
    void print(const ConsoleText& text);

private:
    std::string erased() const;

    const bool terminal;
    std::mutex mutex;
    std::string shown;
};

}  // namespace Tarnkit
