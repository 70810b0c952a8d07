#include "pelk/host/render/plugin_faults.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <string>
#include <utility>

#include "pelk/base/crash_handler.h"
#include "pelk/base/thrown_text.h"
#include "pelk/platform/console.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/events.h"
#include "pelk/platform/last_words.h"
#include "pelk/platform/module.h"
#include "pelk/platform/output_file.h"
#include "pelk/platform/threads.h"

namespace Tarnkit {

namespace {

/// What the rescue may take: a large picture is written in a few seconds.
constexpr int kRescueSeconds = 30;

enum class WatchState { None, WithoutThread, Running };

/// Of the process, as there are no arguments to a signal handler. Never destroyed: a thread may
/// fault while the process ends.
struct Watch {
    WatchState state = WatchState::None;
    int exitCode = 0;
    bool hasTerminal = false;
    platform::Event wake{platform::Event::Reset::manual};
    platform::Thread thread;
    std::atomic<const PluginCallNote*> faulted{nullptr};  // of the first thread that faults
    std::atomic<const PluginCallNote*> rescuer{nullptr};  // of the watch's thread at the rescue
    int step = 0;                                         // of handleFault, on that thread
    char message[2048] = "";
    std::mutex mutex;
    std::function<void()> save;  // under the mutex, which stays locked once it runs
};

Watch& watch() {
    static Watch& only = *new Watch;
    return only;
}

[[noreturn]] void endProcess() {
    platform::dropUnfinishedOutput();
    std::_Exit(watch().exitCode);
}

/// The body of the watch's thread.
void waitForFault(void*) {
    Watch& own = watch();
    own.wake.wait();
    if (!own.faulted)
        return;
    platform::writeErrorOutput(own.message);
    platform::endProcessWithin(kRescueSeconds, own.exitCode, platform::dropUnfinishedOutput);
    const PluginFaultGuard guard;
    own.rescuer = pluginCallNote();
    own.mutex.lock();
    try {
        if (own.save)
            own.save();
    } catch (...) {
        // There is no more to be had.
    }
    endProcess();
}

[[noreturn]] void wakeAndPark() {
    Watch& own = watch();
    if (own.state == WatchState::WithoutThread) {
        platform::writeErrorOutput(own.message);
        endProcess();
    }
    own.wake.set();
    platform::parkThread();
}

void writeMessage(const char* what, const char* call, const char* rest) {
    Watch& own = watch();
    // Where a line of progress may stand, the message begins one of its own.
    std::snprintf(own.message, sizeof own.message, "%spelk: %s in %s%s\n",
                  own.hasTerminal ? "\n" : "", what, call, rest);
    std::replace_if(
        own.message + (own.hasTerminal ? 1 : 0), own.message + std::strlen(own.message) - 1,
        [](char c) { return c == '\n' || c == '\r' || c == '\x1b'; }, ' ');
}

/// Names the plug-in, and the library of the instruction if that is another one: the heap's, or
/// that of a plug-in which was called by the one that is named.
void describeFault(unsigned code, const platform::Fault& fault) {
    writeMessage(platform::faultName(code), "a plug-in", "");
    char call[800], library[512], rest[600] = "";
    const bool inPlugin = describePluginCall(call, sizeof call);
    if (platform::moduleOfAddress(platform::faultInstruction(fault), library, sizeof library) &&
        !std::strstr(call, library))
        std::snprintf(rest, sizeof rest, ", at an instruction of %s", library);
    writeMessage(platform::faultName(code), inPlugin ? call : "pelk itself", rest);
}

/// Makes the calling thread the one whose fault is told. Parks it if another one was first; a fault
/// of the rescue itself is the end.
void claimFault() {
    const PluginCallNote* none = nullptr;
    const PluginCallNote* const mine = pluginCallNote();
    if (watch().rescuer == mine)
        endProcess();
    if (!watch().faulted.compare_exchange_strong(none, mine) && none != mine)
        platform::parkThread();
}

/// Runs inside the signal handler. A step that faults in its turn, as all may be damaged, comes
/// here again and is passed over.
void handleFault(unsigned code, const platform::Fault& fault) {
    Watch& own = watch();
    if (own.state == WatchState::None)
        return;
    claimFault();
    if (own.step++ == 0) {
        describeFault(code, fault);
        ++own.step;
    }
    if (own.step++ <= 2)
        writeFirstCrashDump(code, fault);
    wakeAndPark();
}

}  // namespace

PluginFaultWatch::PluginFaultWatch(int exitCode) {
    Watch& own = watch();
    own.exitCode = exitCode;
    own.hasTerminal = platform::errorConsole().isTerminal();
    own.state = own.thread.start(waitForFault, nullptr, 0) ? WatchState::Running
                                                           : WatchState::WithoutThread;
}

PluginFaultWatch::~PluginFaultWatch() {
    Watch& own = watch();
    own.state = WatchState::None;
    own.wake.set();
    own.thread.join();
}

PluginFaultGuard::PluginFaultGuard()
    : formerNote(setPluginCallNote(&note)),
      formerTranslator(platform::setFaultTranslator(handleFault)) {
    watch();  // made here, and not in the handler
}

PluginFaultGuard::~PluginFaultGuard() {
    platform::setFaultTranslator(formerTranslator);
    setPluginCallNote(formerNote);
}

void FaultRescue::set(std::function<void()> save) {
    const std::lock_guard lock(watch().mutex);
    watch().save = std::move(save);
}

bool hadPluginFault() {
    return watch().faulted.load(std::memory_order_relaxed) != nullptr;
}

void endByTerminate() {
    char call[800];
    if (watch().state == WatchState::None || !describePluginCall(call, sizeof call))
        return;
    claimFault();
    std::string thrown;
    if (std::current_exception()) {
        try {
            thrown = ": " + thrownText();
        } catch (...) {
            // The message does without.
        }
    }
    writeMessage("std::terminate", call, thrown.c_str());
    writeFirstCrashDump(0, {});
    wakeAndPark();
}

}  // namespace Tarnkit
