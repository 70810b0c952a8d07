#pragma once

#include "frame/renderer.h"
#include "pelk/status_line.h"

namespace Tarnkit {

/// Messages of the host and its plug-ins, as lines on standard error. May be called from any
/// thread. Without `verbose`, only warnings and errors are shown.
class ConsoleLog final : public MessageLog {
public:
    ConsoleLog(StatusLine& statusLine, bool verboseLog) : status(statusLine), verbose(verboseLog) {}

    bool isVerbose() const { return verbose; }

    void debug(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void warning(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void error(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void info(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void finish() override {}

private:
    StatusLine& status;
    const bool verbose;
};

}  // namespace Tarnkit
