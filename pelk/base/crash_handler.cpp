#include "pelk/base/crash_handler.h"

#include <cstdio>

#include "pelk/base/exception_msg.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/file.h"

namespace Tarnkit {

namespace {

constexpr std::size_t kMaxPath = 260;

void writeCrashDump(unsigned code, const platform::Fault& fault) {
    // A directory whose name leaves no room for that of the file is passed over for the system's
    // own.
    constexpr char kName[] = "Pelk.dmp";
    char directory[kMaxPath - sizeof kName + 1];
    platform::temporaryDirectory(directory, sizeof directory);
    char fileName[kMaxPath];
    std::snprintf(fileName, sizeof fileName, "%s%s", directory, kName);
    char message[kMaxPath + 32];
    std::snprintf(message, sizeof message, "Writing crash dump to \"%s\"\n", fileName);
    platform::writeOutput(message);
    // A dump that can't be written is lost: the exception that follows matters more.
    platform::writeFaultReport(fileName, code, fault);
}

void crashHandler(unsigned code, const platform::Fault& fault) {
    writeFirstCrashDump(code, fault);
    throw ExceptionMsg("Unhandled exception %x", code);
}

}  // namespace

constinit std::atomic<int> crashDumpWritten{0};

void writeFirstCrashDump(unsigned code, const platform::Fault& fault) {
    // The thread that comes first writes the dump. Others, and later faults, don't wait for it: the
    // thread that writes may itself be the one that never ends.
    if (crashDumpWritten.exchange(1) == 0)
        writeCrashDump(code, fault);
}

platform::FaultTranslator installCrashHandler() {
    return platform::setFaultTranslator(crashHandler);
}

}  // namespace Tarnkit
