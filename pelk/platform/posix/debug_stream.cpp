#include "pelk/platform/debug_stream.h"

#include <unistd.h>

#include <atomic>
#include <cstring>

namespace Tarnkit::platform {

namespace {

constinit std::atomic<DebugSink> debugSink{nullptr};

/// Writes by one system call, so that lines of several threads don't mix. What the system doesn't
/// take is lost, as there is nobody to tell.
void writeOnce(int descriptor, const char* text) {
    [[maybe_unused]] const ssize_t written = ::write(descriptor, text, std::strlen(text));
}

}  // namespace

void writeDebug(const char* text) {
    if (const DebugSink sink = debugSink.load())
        sink(text);
    else
        writeOnce(STDERR_FILENO, text);
}

DebugSink setDebugSink(DebugSink sink) {
    return debugSink.exchange(sink);
}

void writeOutput(const char* text) {
    writeOnce(STDOUT_FILENO, text);
}

void writeErrorOutput(const char* text) {
    writeOnce(STDERR_FILENO, text);
}

}  // namespace Tarnkit::platform
