#include "pelk/platform/stop_signals.h"

#include <csignal>

namespace Tarnkit::platform {

namespace {

constexpr int kStopSignals[] = {SIGHUP, SIGINT, SIGTERM};

/// Asked first and not found out by setting a handler: for a moment there would be one that takes
/// the signal.
bool isIgnored(int signal) {
    struct sigaction present {};
    return sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

}  // namespace

void setStopHandler(StopHandler handler) {
    struct sigaction action {};
    action.sa_handler = handler ? handler : SIG_DFL;
    action.sa_flags = SA_RESTART;
    for (const int signal : kStopSignals)
        sigaddset(&action.sa_mask, signal);
    for (const int signal : kStopSignals) {
        if (!isIgnored(signal))
            sigaction(signal, &action, nullptr);
    }
}

void endBySignal(int signal) {
    std::signal(signal, SIG_DFL);
    // Inside a handler the signal is held back; it comes as soon as that is lifted.
    std::raise(signal);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, signal);
    pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
}

void ignoreWriteSignals() {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace Tarnkit::platform
