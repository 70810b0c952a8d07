#pragma once

#include <cstdarg>

#include "pelk/contract/renderer.h"
#include "pelk/host/cli/diagnostics.h"
#include "pelk/host/cli/status_line.h"

namespace Tarnkit {

/// Messages of the host and its plug-ins, as lines on standard error and in the debug log, which
/// gets all of them. Without `verbose`, standard error shows warnings and errors alone. Any thread
/// may call; a message is one line, as messageText makes it.
class ConsoleLog final : public MessageLog {
public:
    ConsoleLog(StatusLine& statusLine, const Diagnostics& debugLog, bool verboseLog)
        : status(statusLine), diagnostics(debugLog), verbose(verboseLog) {}

    bool isVerbose() const { return verbose; }

    /// Tells why the command as a whole fails, with "pelk:" in front.
    void complain(const std::string& text);

    void debug(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void warning(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void error(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void info(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void finish() override {}

private:
    void add(const char* level, Tone tone, bool shown, const char* format, va_list arguments);

    StatusLine& status;
    const Diagnostics& diagnostics;
    const bool verbose;
};

}  // namespace Tarnkit
