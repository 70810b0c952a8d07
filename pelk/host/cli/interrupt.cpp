#include "pelk/host/cli/interrupt.h"

#include <cerrno>
#include <csignal>

#include "pelk/platform/console.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/output_file.h"

namespace Tarnkit {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};
constexpr char kNotice[] =
    "\npelk: stopping once what is in work is done; Ctrl-C again gives up at once\n";

std::atomic<bool> requested{false}, hasTerminal{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

void onInterrupt(int number) {
    if (requested.exchange(true)) {
        platform::dropUnfinishedOutput();
        std::signal(number, SIG_DFL);
        std::raise(number);
    } else if (hasTerminal) {
        const int keptError = errno;  // of the code that the signal came upon
        platform::writeErrorOutput(kNotice);
        errno = keptError;
    }
}

}  // namespace

InterruptGuard::InterruptGuard() {
    requested.store(false);
    hasTerminal = platform::errorConsole().isTerminal();
    for (const int number : kSignals) {
        if (std::signal(number, onInterrupt) == SIG_IGN)
            std::signal(number, SIG_IGN);
    }
}

InterruptGuard::~InterruptGuard() {
    for (const int number : kSignals) {
        if (std::signal(number, SIG_DFL) == SIG_IGN)
            std::signal(number, SIG_IGN);
    }
}

const std::atomic<bool>& InterruptGuard::wasRequested() const {
    return requested;
}

void ignoreFileSizeSignal() {
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

}  // namespace Tarnkit
