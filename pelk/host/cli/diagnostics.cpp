#include "pelk/host/cli/diagnostics.h"

#include <CLI/CLI.hpp>
#include <atomic>
#include <fstream>
#include <limits>
#include <new>
#include <string_view>

#include "pelk/platform/debug_stream.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"
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

/// Why the file of that name can't be a debug log; empty if it can, or isn't there yet. Opening a
/// pipe would wait for its reader, and whatever else stands there would be lost.
std::string refusal(const std::string& path) {
    constexpr std::string_view kBegin = "pelk ";
    platform::InputFile file(path);
    if (file.isMissing() || (file.isOpen() && file.getSize() == 0))
        return {};
    char begin[kBegin.size()];
    if (!file.isOpen())
        return ": " + file.getReason();
    const bool isLog =
        file.read(0, begin, sizeof begin) && std::string_view(begin, sizeof begin) == kBegin;
    return isLog ? "" : ": it is there and no debug log of pelk";
}

void addWorkingSet() {
    char text[100];
    if (formatWorkingSet(text, sizeof text))
        addToLog((std::string(text) + "\n").c_str());
}

}  // namespace

std::string debugLogPath(int id) {
    char path[4200];
    return getDebugLogPath(id, path, sizeof path) ? platform::nativePath(path) : "";
}

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
    const std::string path = debugLogPath(id);
    error = refusal(path);
    if (error.empty())
        clearDebugLog(id);
    if (!error.empty() || !std::ofstream(path, std::ios::app)) {
        error = "cannot write the debug log \"" + path + "\"" + error;
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
