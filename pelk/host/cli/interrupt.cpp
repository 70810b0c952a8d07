#include "pelk/host/cli/interrupt.h"

#include <cerrno>

#include "pelk/platform/console.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/output_file.h"
#include "pelk/platform/stop_signals.h"

namespace Tarnkit {

namespace {

constexpr char kNotice[] = "\npelk: stopping; Ctrl-C again gives up at once\n";

std::atomic<bool> requested{false}, hasTerminal{false};
std::atomic<int> firstSignal{0};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "set from a signal handler");

void onInterrupt(int signal) {
    int none = 0;
    if (!firstSignal.compare_exchange_strong(none, signal)) {
        platform::dropUnfinishedOutput();
        platform::endBySignal(signal);
        return;
    }
    requested.store(true);
    if (hasTerminal) {
        const int keptError = errno;  // of the code that the signal came upon
        platform::writeErrorOutput(kNotice);
        errno = keptError;
    }
}

}  // namespace

InterruptGuard::InterruptGuard() {
    requested.store(false);
    firstSignal.store(0);
    hasTerminal = platform::errorConsole().isTerminal();
    platform::setStopHandler(onInterrupt);
}

InterruptGuard::~InterruptGuard() {
    platform::setStopHandler(nullptr);
}

const std::atomic<bool>& InterruptGuard::wasRequested() const {
    return requested;
}

ExitCode InterruptGuard::getExitCode() const {
    return static_cast<ExitCode>(128 + firstSignal.load());
}

}  // namespace Tarnkit
