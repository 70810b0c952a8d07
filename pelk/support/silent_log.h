#pragma once

#include "pelk/contract/renderer.h"

namespace Tarnkit {

/// Drops every message. Stands in where a caller gave no log, so that the code which reports need
/// not ask at each message whether there is one:
///
///     SilentLog silent;
///     MessageLog& report = log ? *log : silent;
///
/// Has no state: costs nothing to make, and any thread may call it.
class SilentLog final : public MessageLog {
public:
    void debug(const char*, ...) override {}
    void warning(const char*, ...) override {}
    void error(const char*, ...) override {}
    void info(const char*, ...) override {}
    void finish() override {}
};

}  // namespace Tarnkit
