#pragma once

#include <mutex>
#include <string>

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
    /// Rewrites the line below. Does nothing where there is no terminal.
    void show(const std::string& text);
    /// Prints a line of text; a line feed at its end is optional.
    void print(std::string text);

private:
    std::string erased() const;

    const bool terminal;
    std::mutex mutex;
    std::string shown;
};

}  // namespace Tarnkit
