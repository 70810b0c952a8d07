#include <execinfo.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

#include "pelk/platform/fault.h"

namespace Tarnkit::platform {

namespace {

/// Formats and writes a line of the report. Numbers and short texts only: for those vsnprintf
/// allocates nothing, and the heap may be what is broken.
__attribute__((format(printf, 2, 3))) bool writeLine(int file, const char* format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    return length >= 0 && write(file, line, length) == length;
}

bool writeRecord(int file, unsigned code, const siginfo_t* record) {
    const long thread = syscall(SYS_gettid);
    if (!writeLine(file, "process %d, thread %ld, signal %u\n", getpid(), thread, code))
        return false;
    return !record || writeLine(file, "reason %d, address %p\n", record->si_code, record->si_addr);
}

bool writeRegisters(int file, const ucontext_t* context) {
    bool good = writeLine(file, "\nregisters\n");
#if defined(__x86_64__)
    static constexpr const char* kNames[] = {"r8",  "r9",  "r10", "r11", "r12", "r13",
                                             "r14", "r15", "rdi", "rsi", "rbp", "rbx",
                                             "rdx", "rax", "rcx", "rsp", "rip", "eflags"};
    int i = 0;
    for (const char* name : kNames)
        good = good && writeLine(file, "%-6s %016llx\n", name, context->uc_mcontext.gregs[i++]);
#elif defined(__aarch64__)
    int i = 0;
    for (const auto value : context->uc_mcontext.regs)
        good = good && writeLine(file, "x%-5d %016llx\n", i++, value);
    good = good && writeLine(file, "sp     %016llx\n", context->uc_mcontext.sp) &&
           writeLine(file, "pc     %016llx\n", context->uc_mcontext.pc);
#endif
    return good;
}

bool writeCalls(int file) {
    void* calls[128];
    const int count = backtrace(calls, 128);
    const bool good = writeLine(file, "\ncalls, the latest first\n");
    backtrace_symbols_fd(calls, count, file);
    return good;
}

bool writeMemoryMap(int file) {
    bool good = writeLine(file, "\nmemory map\n");
    const int map = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (map < 0)
        return false;
    char piece[4096];
    for (ssize_t length; (length = read(map, piece, sizeof piece)) > 0;)
        good = write(file, piece, length) == length && good;
    close(map);
    return good;
}

}  // namespace

bool writeFaultReport(const char* fileName, unsigned code, const Fault& fault) {
    // Anyone can guess the name and put a symbolic link there, to have us overwrite another file:
    // none is followed. The report is for its owner alone, as addresses help to attack the process.
    const int flags = O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
    const int file = open(fileName, flags, 0600);
    if (file < 0)
        return false;
    bool good = writeRecord(file, code, static_cast<const siginfo_t*>(fault.record));
    if (fault.context)
        good = writeRegisters(file, static_cast<const ucontext_t*>(fault.context)) && good;
    good = writeCalls(file) && good;
    good = writeMemoryMap(file) && good;
    return close(file) == 0 && good;
}

}  // namespace Tarnkit::platform
