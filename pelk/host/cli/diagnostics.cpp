#include "pelk/host/cli/diagnostics.h"

#include <CLI/CLI.hpp>
#include <atomic>
#include <fstream>
#include <limits>
#include <new>

#include "pelk/platform/debug_stream.h"
#include "pelk/platform/file.h"
#include "pelk/support/debug_log.h"
#include "pelk/support/machine_info.h"
#include "pelk/support/thread_manager.h"

namespace Tarnkit {

namespace {

constexpr int kNoLog = -1;
std::atomic<int> logInUse{kNoLog};

void addToLog(const char* text) {
    const int id = logInUse;
    if (id == kNoLog)
        return;
    try {
        appendDebugLog(id, "%s", text);
    } catch (const std::bad_alloc&) {
        // The text may be about the very lack of memory.
    }
}

void addWorkingSet() {
    char text[100];
    if (formatWorkingSet(text, sizeof text))
        addToLog((std::string(text) + "\n").c_str());
}

}  // namespace

void LogOptions::addTo(CLI::App& command) {
    command.add_flag("-v,--verbose", verbose, "Tell more, on standard error");
    command
        .add_option("--debug-log", debugLog,
                    "Keep all messages, and what the libraries tell their developers, in the file "
                    "pelk_dbg_log_N of TMPDIR, else /tmp")
        ->type_name("N")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
}

Diagnostics::Diagnostics() {
    platform::setDebugSink(addToLog);
}

Diagnostics::~Diagnostics() {
    addWorkingSet();
    logInUse = kNoLog;
    platform::setDebugSink(nullptr);
}

bool Diagnostics::keepIn(int id, std::string& error) {
    char path[4200];
    clearDebugLog(id);
    if (!getDebugLogPath(id, path, sizeof path) ||
        !std::ofstream(platform::nativePath(path), std::ios::app)) {
        error = "cannot write the debug log " + platform::nativePath(path);
        return false;
    }
    appendDebugLog(id, "pelk %s, %d of %d MB of memory free, %d threads\n", PELK_VERSION,
                   getFreeMemoryMB(), getTotalPhysicalMemoryMB(), getNumThreads());
    logInUse = id;
    return true;
}

void Diagnostics::add(const std::string& line) const {
    addToLog((line + "\n").c_str());
}

}  // namespace Tarnkit
