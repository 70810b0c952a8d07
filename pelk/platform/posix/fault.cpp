#include "pelk/platform/fault.h"

#include <execinfo.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <mutex>

namespace Tarnkit::platform {

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

/// The handlers of each signal that ours has replaced, the latest first. There may be several, as a
/// library that puts up its own later makes us put ours up again. Such a handler may call ours,
/// which it replaced; it then expects us to call the one that came before it, not itself.
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

    /// Makes this the thread's signal stack, unless it has one of sufficient size, as under a
    /// sanitizer. A smaller one would overflow in the translator; it is put back when the thread
    /// ends.
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
    const void* frame;    ///< our stack frame
    int action;           ///< its place in formerActions
};

// The storage is reserved when the library is loaded. By default a thread's first access allocates
// it, and that access may be the fault handler's.
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

/// Calls the handler that ours has replaced, or takes the system's default action. Ours stays in
/// place for the other threads, unless the process ends.
void passOn(int number, siginfo_t* record, void* context, bool sent) {
    const auto place = std::find(std::begin(kSignals), std::end(kSignals), number);
    struct sigaction* former = formerActions[place - std::begin(kSignals)];
    // If the handler that we have called for this very signal calls us in turn (same context, and
    // our stack frame lies deeper), the next of the replaced ones has its turn.
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

/// After a call to an address without code, such as a null function pointer, the program counter is
/// that address, for which the unwinder finds no function and ends the process. So the counter and
/// the stack are put back to the instruction that called.
void leaveBadCall([[maybe_unused]] ucontext_t& context, [[maybe_unused]] const siginfo_t& record) {
#if defined(__x86_64__)
    greg_t* registers = context.uc_mcontext.gregs;
    if (record.si_signo != SIGSEGV ||
        reinterpret_cast<greg_t>(record.si_addr) != registers[REG_RIP])
        return;
    // The return address may already belong to another function or another try block; unwinders
    // take the byte before it, which lies in the call.
    registers[REG_RIP] = *reinterpret_cast<const greg_t*>(registers[REG_RSP]) - 1;
    registers[REG_RSP] += sizeof(greg_t);
#endif
}

void translate(int number, const siginfo_t& record, ucontext_t& context) {
    // The translator leaves by an exception, so nothing would unblock the signal afterwards, and
    // the next fault of a blocked signal ends the process.
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

/// Installs our handler for each signal that has another one, at the first call or since.
void installHandlers() {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    // The first call of backtrace loads a library, which must not happen in a fault handler.
    void* caller;
    backtrace(&caller, 1);
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

const char* faultName(unsigned code) {
    const char* const words = sigdescr_np(static_cast<int>(code));
    return words ? words : "Fault";
}

const void* faultInstruction(const Fault& fault) {
    if (!fault.record || !fault.context)
        return nullptr;
#if defined(__x86_64__)
    ucontext_t context = *static_cast<const ucontext_t*>(fault.context);
    leaveBadCall(context, *static_cast<const siginfo_t*>(fault.record));
    return reinterpret_cast<const void*>(context.uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return reinterpret_cast<const void*>(
        static_cast<const ucontext_t*>(fault.context)->uc_mcontext.pc);
#else
    return nullptr;
#endif
}

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
