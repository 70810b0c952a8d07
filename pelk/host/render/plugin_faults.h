#pragma once

#include <functional>

#include "pelk/contract/plugin_call.h"
#include "pelk/platform/fault.h"

namespace Tarnkit {

/// Watches over the process while it lives: made by the main function, once. A thread under a
/// PluginFaultGuard that faults is stopped for good where it stands, since the code of others can't
/// be unwound whatever compiler it comes from. On another thread, this names on standard error the
/// plug-in and its operation, has the FaultRescue save what is whole, and ends the process with
/// `exitCode`. That has a limit of time, as the heap may be locked for ever.
class PluginFaultWatch {
public:
    explicit PluginFaultWatch(int exitCode);
    ~PluginFaultWatch();
    PluginFaultWatch(const PluginFaultWatch&) = delete;
    PluginFaultWatch& operator=(const PluginFaultWatch&) = delete;
};

/// While it lives, calls into plug-ins are noted for the thread that made it, and its faults go to
/// the process's PluginFaultWatch; without one they end the process as ever. For every thread that
/// runs plug-ins.
class PluginFaultGuard {
public:
    PluginFaultGuard();
    ~PluginFaultGuard();
    PluginFaultGuard(const PluginFaultGuard&) = delete;
    PluginFaultGuard& operator=(const PluginFaultGuard&) = delete;

private:
    PluginCallNote note;
    PluginCallNote* const formerNote;
    const platform::FaultTranslator formerTranslator;
};

/// What is to be saved when a plug-in faults, while this lives; one at a time. `save` runs on the
/// watch's thread, while the one that faulted is stopped and all others go on.
class FaultRescue {
public:
    FaultRescue() = default;
    ~FaultRescue() { set({}); }
    FaultRescue(const FaultRescue&) = delete;
    FaultRescue& operator=(const FaultRescue&) = delete;

    /// In place of what was set before. Waits until that is done, if it is under way: forever then,
    /// as the process ends with it.
    void set(std::function<void()> save);
};

/// Whether a thread of this process has had such a fault: others may end their work, and must leave
/// the rest to the rescue. Any thread may ask.
bool hadPluginFault();

/// For std::terminate, which a plug-in comes to by an exception that it doesn't let out: names it
/// and ends the process as at a fault. Returns if the thread is in no plug-in, or without a watch.
void endByTerminate();

}  // namespace Tarnkit
