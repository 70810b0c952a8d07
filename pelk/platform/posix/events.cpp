#include "pelk/platform/events.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <ctime>

namespace Tarnkit::platform {

namespace {

// The system's own way to sleep until a word changes. A condition variable would do, but locks a
// mutex at each turn and asks the system three times for each signal.
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
    // Both are in one order for all threads: who goes to sleep has counted itself before it looks
    // at the signal a last time, so it is seen here or sees the signal.
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
