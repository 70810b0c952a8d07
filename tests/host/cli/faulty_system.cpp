#include "host/cli/faulty_system.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

struct Call {
    unsigned number;
    int argument;          ///< which of the arguments tells the file
    bool isNamed = false;  ///< by its name and not by a descriptor
    bool writes = false;
    bool counts = false;  ///< whether its third argument is a number of bytes
};

constexpr Call kCalls[] = {
    {.number = SYS_openat, .argument = 1, .isNamed = true},
    {.number = SYS_read, .argument = 0, .counts = true},
    {.number = SYS_pread64, .argument = 0, .counts = true},
    {.number = SYS_mmap, .argument = 4},
    {.number = SYS_close, .argument = 0},
    {.number = SYS_write, .argument = 0, .writes = true, .counts = true},
    {.number = SYS_pwrite64, .argument = 0, .writes = true, .counts = true},
    {.number = SYS_writev, .argument = 0, .writes = true},
    {.number = SYS_fsync, .argument = 0, .writes = true},
    {.number = SYS_fdatasync, .argument = 0, .writes = true},
    {.number = SYS_rename, .argument = 0, .isNamed = true, .writes = true},
    {.number = SYS_renameat, .argument = 1, .isNamed = true, .writes = true},
};

std::string fileOf(const Call& call, int thread, const user_regs_struct& registers) {
    const unsigned long long arguments[] = {registers.rdi, registers.rsi, registers.rdx,
                                            registers.r10, registers.r8};
    const std::string process = "/proc/" + std::to_string(thread);
    const unsigned long long value = arguments[call.argument];
    std::error_code none;
    if (!call.isNamed)
        return std::filesystem::read_symlink(
            process + "/fd/" + std::to_string(static_cast<int>(value)), none);
    std::string name;
    std::ifstream memory(process + "/mem", std::ios::binary);
    std::getline(memory.seekg(static_cast<std::streamoff>(value)), name, '\0');
    return name;
}

bool canMeet(const SystemFault& fault, const Call& call, const user_regs_struct& registers) {
    if (fault.answer == ENOSPC)
        return call.writes || (call.number == SYS_openat && (registers.rdx & O_CREAT));
    return fault.answer != SystemFault::kHalf || (call.counts && registers.rdx > 1);
}

/// Puts the fault in the way of a call before which a thread has stopped.
void meet(SystemFault& fault, int thread, const std::string& directory) {
    user_regs_struct registers;
    ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
    const auto call = std::find_if(std::begin(kCalls), std::end(kCalls), [&](const Call& known) {
        return known.number == registers.orig_rax;
    });
    if (call == std::end(kCalls) || !canMeet(fault, *call, registers))
        return;
    const std::string file = fileOf(*call, thread, registers);
    const bool isRelative = call->isNamed && !file.starts_with('/');  // to where the program is
    if (!isRelative && !file.starts_with(directory))
        return;
    if (fault.call-- > 0 || (fault.met && !fault.lasts))
        return;
    fault.met = true;
    if (fault.answer == SystemFault::kKill) {
        kill(thread, SIGKILL);
    } else if (fault.answer == SystemFault::kHalf) {
        registers.rdx /= 2;
    } else {
        registers.orig_rax = ~0ull;  // no call at all
        registers.rax = static_cast<unsigned long long>(-fault.answer);
    }
    ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
}

}  // namespace

bool letParentFollow() {
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const Call& call : kCalls) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call.number, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 && raise(SIGSTOP) == 0 &&
           prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

int follow(int process, const std::string& directory, SystemFault& fault) {
    int status = 0;
    waitpid(process, &status, WUNTRACED);
    if (!WIFSTOPPED(status))
        return status;
    ptrace(PTRACE_SETOPTIONS, process, nullptr,
           PTRACE_O_TRACESECCOMP | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL);
    ptrace(PTRACE_CONT, process, nullptr, nullptr);
    for (int thread; (thread = waitpid(-1, &status, __WALL)) > 0;) {
        if (!WIFSTOPPED(status)) {
            if (thread == process)
                break;
            continue;  // the end of one of its threads
        }
        const int event = status >> 16;
        if (event == PTRACE_EVENT_SECCOMP)
            meet(fault, thread, directory);
        // A thread that is followed stops as it begins.
        const bool isSignal = event == 0 && WSTOPSIG(status) != SIGSTOP;
        ptrace(PTRACE_CONT, thread, nullptr, isSignal ? WSTOPSIG(status) : 0);
    }
    return status;
}
