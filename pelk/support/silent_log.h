#pragma once

#include "pelk/contract/renderer.h"

namespace Tarnkit {

/// Drops every message. Stands in where a caller gave no log.
class SilentLog final : public MessageLog {
public:
    void debug(const char*, ...) override {}
    void warning(const char*, ...) override {}
    void error(const char*, ...) override {}
    void info(const char*, ...) override {}
    void finish() override {}
};

}  // namespace Tarnkit
