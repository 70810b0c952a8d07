#include "platform/fault.h"

#include <execinfo.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>

#include <cstddef>
#include <iterator>
#include <mutex>

namespace Tarnkit::platform {

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
struct sigaction formerActions[std::size(kSignals)];

/// The stack that this thread's faults are handled on: its own may be what has run out.
class AlternateStack {
public:
    ~AlternateStack() {
        if (!memory)
            return;
        const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
        sigaltstack(&none, nullptr);
        munmap(memory, kSize);
    }

    /// Makes the stack at the first call. A thread that has one, from a tool or host, keeps it.
    void provide() {
        stack_t present;
        if (sigaltstack(nullptr, &present) == 0 && !(present.ss_flags & SS_DISABLE))
            return;
        void* pages =
            mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED)
            return;
        const stack_t stack{.ss_sp = pages, .ss_flags = 0, .ss_size = kSize};
        if (sigaltstack(&stack, nullptr) == 0)
            memory = pages;
        else
            munmap(pages, kSize);
    }

private:
    static constexpr std::size_t kSize = 256 * 1024;
    void* memory = nullptr;
};

// Bound when the library is loaded: the usual way may allocate at a thread's first look, and that
// look may be the fault handler's.
__attribute__((tls_model("initial-exec"))) constinit thread_local FaultTranslator translator =
    nullptr;

/// Leaves the signal to whoever handled it before.
void restoreFormerAction(int number, const siginfo_t& record) {
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
        if (kSignals[i] == number)
            sigaction(number, &formerActions[i], nullptr);
    // A fault repeats when its instruction does; a signal that was sent comes only once.
    if (record.si_code <= 0)
        raise(number);
}

extern "C" void handleFault(int number, siginfo_t* record, void* context) {
    const bool sent = record->si_code <= 0;
    if (!translator || sent)
        return restoreFormerAction(number, *record);
    // The translator doesn't come back, so the signal must be open again before it runs: a
    // second fault, blocked, would end the process.
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, number);
    pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
    translator(static_cast<unsigned>(number), {.record = record, .context = context});
    restoreFormerAction(number, *record);
}

void installHandlers() {
    // The first look at the call stack loads a library, which a fault handler must not.
    void* frame;
    backtrace(&frame, 1);
    struct sigaction action {};
    action.sa_sigaction = handleFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
        sigaction(kSignals[i], &action, &formerActions[i]);
}

}  // namespace

FaultTranslator setFaultTranslator(FaultTranslator newTranslator) {
    const FaultTranslator former = translator;
    if (newTranslator) {
        static thread_local AlternateStack stack;
        stack.provide();
        static std::once_flag installed;
        std::call_once(installed, installHandlers);
    }
    translator = newTranslator;
    return former;
}

}  // namespace Tarnkit::platform
