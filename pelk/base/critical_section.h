#pragma once

#include "pelk/platform/lock.h"

namespace Tarnkit {

// The locks of the library. They guard what host and plug-ins do between frames and the message
// queues of worker threads; at a hit nothing is locked. All are recursive: the thread that holds
// one may enter it again and must leave it as often. None is fair, and none can be copied. A lock
// is held by a ScopedLock, or by calls in pairs where its holding doesn't follow a scope.

/// The lock that is meant wherever a class holds one. A thread that finds it taken tries up to
/// 2,000 times more before it goes to sleep: what it guards is done in less time than falling
/// asleep and waking up take. Not for a lock that is held while something is computed
/// or written to a file: all who wait would spin for nothing first.
class CriticalSection {
public:
    /// Returns when the calling thread holds the lock.
    void enter() { lock.enter(); }
    /// True if the lock was free or the caller's own; never waits.
    bool tryEnter() { return lock.tryEnter(); }
    /// Undoes one `enter`, on the thread that made it.
    void leave() { lock.leave(); }

private:
    platform::Lock lock{2000};  // attempts before the thread sleeps
};

/// The same without tries of its own: a thread that finds it taken leaves the wait to the system at
/// once. For what is held longer, such as the thread manager's lists, where spinning would burn the
/// processor that the holder could run on.
class PlainCriticalSection {
public:
    void enter() { lock.enter(); }
    bool tryEnter() { return lock.tryEnter(); }
    void leave() { lock.leave(); }

private:
    platform::Lock lock;
};

/// Enters a lock that is held for moments only, and by many threads in turn, such as the queue of a
/// worker thread. In three steps: up to 1,500 attempts in a tight loop, for a holder on another
/// processor is done by then; up to 1,500 more with the time slice given away after each, for a
/// holder that waits for this very processor; then a blocking enter, which always ends the wait.
/// `Section`: either class above. The caller leaves it by `leave`.
template <class Section>
void spinEnter(Section& section) {
    // An attempt costs one atomic operation; going to sleep costs a system call and the way back.
    constexpr int kAttempts = 1500;
    for (int i = 0; i < kAttempts; ++i)
        if (section.tryEnter())
            return;
    for (int i = 0; i < kAttempts; ++i) {
        if (section.tryEnter())
            return;
        platform::yieldThread();
    }
    section.enter();
}

/// Holds a lock until the end of the scope, on every way out of it, an ExceptionMsg included. Give
/// it a name: a nameless one ends with its statement, which `nodiscard` warns of. `Section`: either
/// class above; it must outlive the holder.
///
///     {
///         const ScopedLock hold(lock);
///         latches.take();
///     }
template <class Section>
class [[nodiscard]] ScopedLock {
public:
    /// Enters `entered`, waiting as long as it takes.
    explicit ScopedLock(Section& entered) : section(entered) { section.enter(); }
    ~ScopedLock() { section.leave(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    Section& section;
};

}  // namespace Tarnkit
