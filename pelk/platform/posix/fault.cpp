#include "pelk/platform/fault.h"

#include <execinfo.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <mutex>

namespace Tarnkit::platform {

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

/// Who handled each signal when our handler was put up, the latest first. The latest may know ours
/// from an earlier time and call it; what it expects then is who comes next.
constexpr int kKeptActions = 4;
struct sigaction formerActions[std::size(kSignals)][kKeptActions];

/// The stack that this thread's faults are handled on: its own may be what has run out.
class AlternateStack {
public:
    ~AlternateStack() {
        if (!memory)
            return;
        stack_t present;
        if (sigaltstack(nullptr, &present) == 0 && present.ss_sp == memory)
            sigaltstack(&former, nullptr);
        munmap(memory, kSize);
    }

    /// Puts the stack up, unless a tool's or host's stands that will do. A smaller one would run
    /// over; it stands aside until the thread ends.
    void provide() {
        stack_t present;
        const bool known = sigaltstack(nullptr, &present) == 0;
        if (known && !(present.ss_flags & SS_DISABLE) && present.ss_size >= kEnough)
            return;
        if (!memory)
            memory = takePages();
        if (!memory)
            return;
        const stack_t stack{.ss_sp = memory, .ss_flags = 0, .ss_size = kSize};
        if (sigaltstack(&stack, nullptr) == 0 && known)
            former = present;
    }

private:
    static void* takePages() {
        void* pages =
            mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return pages == MAP_FAILED ? nullptr : pages;
    }

    static constexpr std::size_t kSize = 256 * 1024;
    static constexpr std::size_t kEnough = 64 * 1024;
    void* memory = nullptr;
    stack_t former{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
};

/// A call of a former handler.
struct PassedOn {
    const void* context;  ///< of the signal
    const void* frame;    ///< our place on the stack
    int action;           ///< which of the former ones
};

// Bound when the library is loaded: the usual way may allocate at a thread's first look, and that
// look may be the fault handler's.
__attribute__((tls_model("initial-exec"))) constinit thread_local FaultTranslator translator =
    nullptr;
__attribute__((tls_model("initial-exec"))) constinit thread_local PassedOn passedOn = {};

sigset_t only(int number) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, number);
    return set;
}

void callHandler(const struct sigaction& action, int number, siginfo_t* record, void* context) {
    const sigset_t own = only(number);
    pthread_sigmask(SIG_BLOCK, &action.sa_mask, nullptr);
    pthread_sigmask(action.sa_flags & SA_NODEFER ? SIG_UNBLOCK : SIG_BLOCK, &own, nullptr);
    if (action.sa_flags & SA_SIGINFO)
        action.sa_sigaction(number, record, context);
    else
        action.sa_handler(number);
}

/// Leaves the signal to whoever handled it before. Our handler stays for the other threads, unless
/// the process ends.
void passOn(int number, siginfo_t* record, void* context, bool sent) {
    const auto place = std::find(std::begin(kSignals), std::end(kSignals), number);
    struct sigaction* former = formerActions[place - std::begin(kSignals)];
    // The handler that we have passed this signal on to may have called us.
    PassedOn call{context, __builtin_frame_address(0), 0};
    if (passedOn.context == call.context && passedOn.frame > call.frame)
        call.action = passedOn.action + 1;
    struct sigaction action {};
    if (call.action < kKeptActions)
        action = former[call.action];
    if (action.sa_handler == SIG_IGN && sent)
        return;
    if (action.sa_handler == SIG_IGN || action.sa_handler == SIG_DFL) {
        signal(number, SIG_DFL);
        // A fault repeats when its instruction does; a signal that was sent comes only once.
        if (sent)
            raise(number);
        return;
    }
    if (action.sa_flags & SA_RESETHAND)
        former[call.action] = {};
    passedOn = call;
    callHandler(action, number, record, context);
}

/// Where nothing can be run, nothing can be unwound: a call that led there is taken back.
void leaveBadCall([[maybe_unused]] ucontext_t& context, [[maybe_unused]] const siginfo_t& record) {
#if defined(__x86_64__)
    greg_t* registers = context.uc_mcontext.gregs;
    if (record.si_signo != SIGSEGV ||
        reinterpret_cast<greg_t>(record.si_addr) != registers[REG_RIP])
        return;
    // One less than the place to return to lies in the call, as all unwinding has it.
    registers[REG_RIP] = *reinterpret_cast<const greg_t*>(registers[REG_RSP]) - 1;
    registers[REG_RSP] += sizeof(greg_t);
#endif
}

void translate(int number, const siginfo_t& record, ucontext_t& context) {
    // The translator doesn't come back, so the signal must be open again before it runs: a
    // second fault, blocked, would end the process.
    const sigset_t own = only(number);
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    ucontext_t original = context;
    leaveBadCall(context, record);
    translator(static_cast<unsigned>(number), {.record = &record, .context = &original});
    context = original;
}

extern "C" void handleFault(int number, siginfo_t* record, void* context) {
    const bool sent = record->si_code <= 0;
    if (translator && !sent)
        translate(number, *record, *static_cast<ucontext_t*>(context));
    passOn(number, record, context, sent);
}

/// Puts our handler up where it doesn't stand, or no longer.
void installHandlers() {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    // The first look at the call stack loads a library, which a fault handler must not.
    void* frame;
    backtrace(&frame, 1);
    struct sigaction ours {};
    ours.sa_sigaction = handleFault;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&ours.sa_mask);
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        struct sigaction present;
        if (sigaction(kSignals[i], nullptr, &present) != 0 || present.sa_sigaction == handleFault)
            continue;
        std::shift_right(std::begin(formerActions[i]), std::end(formerActions[i]), 1);
        formerActions[i][0] = present;
        sigaction(kSignals[i], &ours, nullptr);
    }
}

}  // namespace

FaultTranslator setFaultTranslator(FaultTranslator newTranslator) {
    const FaultTranslator former = translator;
    if (newTranslator) {
        static thread_local AlternateStack stack;
        stack.provide();
        installHandlers();
    }
    translator = newTranslator;
    return former;
}

}  // namespace Tarnkit::platform
