#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace Tarnkit {

/// How much a command tells: the options --verbose and --debug-log of all commands that read
/// scenes.
struct LogOptions {
    bool verbose = false;
    std::optional<int> debugLog;  ///< number of the debug log that gets all messages

    void addTo(CLI::App& command);
};

/// The name of the debug log with that number; empty if it can't have one.
std::string debugLogPath(int id);

/// Where messages for developers go while a command runs. What the libraries print by debugPrint is
/// kept from standard error while this lives; it goes into the debug log that the user chose,
/// together with all messages of the command, and is dropped if there is none. The sink of
/// debugPrint is the process's, so there may be only one object of this class at a time.
class Diagnostics {
public:
    Diagnostics();
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    /// Empties the debug log of that number and writes to it from now on. False if it can't be
    /// written, or something else than an older log is there; `error` then says so.
    bool keepIn(int id, std::string& error);

    /// Adds a line of text. Any thread may call.
    void add(const std::string& line) const;
};

}  // namespace Tarnkit
