#include "pelk/platform/last_words.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <initializer_list>

namespace Tarnkit::platform {

namespace {

// Written before the handler is put up.
int codeAtEnd = 0;
void (*lastStep)() = nullptr;

extern "C" void endNow(int) {
    lastStep();
    _exit(codeAtEnd);
}

}  // namespace

void parkThread() {
    for (;;)
        pause();
}

void endProcessWithin(int seconds, int exitCode, void (*last)()) {
    codeAtEnd = exitCode;
    lastStep = last;
    struct sigaction action {};
    action.sa_handler = endNow;
    sigemptyset(&action.sa_mask);
    sigset_t needed;
    sigemptyset(&needed);
    for (const int number : {SIGALRM, SIGABRT}) {
        sigaction(number, &action, nullptr);
        sigaddset(&needed, number);
    }
    pthread_sigmask(SIG_UNBLOCK, &needed, nullptr);
    alarm(static_cast<unsigned>(seconds));
}

}  // namespace Tarnkit::platform
