#include "pelk/interrupt.h"

#include <csignal>

namespace Tarnkit {

namespace {

std::atomic<bool> requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

void onInterrupt(int) {
    requested.store(true);
    std::signal(SIGINT, SIG_DFL);
}

}  // namespace

InterruptGuard::InterruptGuard() {
    requested.store(false);
    std::signal(SIGINT, onInterrupt);
}

InterruptGuard::~InterruptGuard() {
    std::signal(SIGINT, SIG_DFL);
}

const std::atomic<bool>& InterruptGuard::wasRequested() const {
    return requested;
}

}  // namespace Tarnkit
