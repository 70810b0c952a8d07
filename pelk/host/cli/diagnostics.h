#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace Tarnkit {

/// How much a command tells; options of all commands that work on scenes.
struct LogOptions {
    bool verbose = false;
    std::optional<int> debugLog;  ///< number of the debug log that keeps all of it

    void addTo(CLI::App& command);
};

/// While it lives, what the libraries send to the debug stream does not go to standard error, but
/// into a debug log, if there is one, with all messages of the command. There is one at a time.
class Diagnostics {
public:
    Diagnostics();
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    /// Empties the debug log of that number and writes to it from now on. False if it can't be
    /// written; `error` then says so.
    bool keepIn(int id, std::string& error);

    /// Adds a line of text. Any thread may call.
    void add(const std::string& line) const;
};

}  // namespace Tarnkit
