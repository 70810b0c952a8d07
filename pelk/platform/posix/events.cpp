#include "pelk/platform/events.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <ctime>

namespace Tarnkit::platform {

namespace {

// A futex: Linux puts a thread to sleep as long as a word in memory has a certain value. A
// condition variable would do, but takes a mutex each time and needs more system calls for each
// signal.
static_assert(sizeof(std::atomic<int>) == sizeof(int) && std::atomic<int>::is_always_lock_free);

/// Sleeps while the word is 0, until the time at the latest if there is one. May return sooner.
/// False if the time is over.
bool sleepWhileZero(std::atomic<int>& word, const timespec* until) {
    return syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, 0, until, nullptr,
                   FUTEX_BITSET_MATCH_ANY) == 0 ||
           errno != ETIMEDOUT;
}

timespec timeFromNow(int milliseconds) {
    constexpr long kSecond = 1'000'000'000;
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += milliseconds / 1000;
    time.tv_nsec += milliseconds % 1000 * 1'000'000L;
    if (time.tv_nsec >= kSecond) {
        ++time.tv_sec;
        time.tv_nsec -= kSecond;
    }
    return time;
}

}  // namespace

void Event::set() {
    signalled = 1;
    // Sequentially consistent, both here and in `wait`: a thread that goes to sleep raises
    // `waiters` before its last look at the signal. So either it is counted here, or it sees the
    // signal; no thread sleeps through one.
    if (waiters > 0)
        syscall(SYS_futex, &signalled, FUTEX_WAKE_PRIVATE,
                resetKind == Reset::automatic ? 1 : INT_MAX);
}

void Event::reset() {
    signalled = 0;
}

bool Event::take() {
    int expected = 1;
    return resetKind == Reset::manual ? signalled == 1
                                      : signalled.compare_exchange_strong(expected, 0);
}

void Event::wait() {
    ++waiters;
    while (!take())
        sleepWhileZero(signalled, nullptr);
    --waiters;
}

bool Event::waitFor(int milliseconds) {
    if (take())
        return true;
    const timespec until = timeFromNow(milliseconds);
    ++waiters;
    bool taken = false;
    for (bool inTime = true; inTime && !taken; taken = take())
        inTime = sleepWhileZero(signalled, &until);
    --waiters;
    return taken;
}

}  // namespace Tarnkit::platform
