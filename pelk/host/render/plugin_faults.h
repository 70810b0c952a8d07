#pragma once

#include "pelk/base/crash_handler.h"

namespace Tarnkit {

/// While it lives, a hardware fault of this thread is thrown as an ExceptionMsg: plug-ins are code
/// of others, and a fault in one is to end the render with words and an answer of its own. Where
/// the faulty function can't be left by an exception, std::terminate is called instead.
class PluginFaultGuard {
public:
    PluginFaultGuard() : former(installCrashHandler()) {}
    ~PluginFaultGuard() { platform::setFaultTranslator(former); }
    PluginFaultGuard(const PluginFaultGuard&) = delete;
    PluginFaultGuard& operator=(const PluginFaultGuard&) = delete;

private:
    const platform::FaultTranslator former;
};

/// Whether a thread of this process has had such a fault.
inline bool hadPluginFault() {
    return crashDumpWritten != 0;
}

}  // namespace Tarnkit
