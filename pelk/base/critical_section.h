#pragma once

#include "pelk/platform/lock.h"

namespace Tarnkit {

/// The lock that is meant wherever a class holds one. Its owner can enter it again.
class CriticalSection {
public:
    void enter() { lock.enter(); }
    bool tryEnter() { return lock.tryEnter(); }
    void leave() { lock.leave(); }

private:
    platform::Lock lock{2000};
};

/// The same with the system's own idea of how long to spin.
class PlainCriticalSection {
public:
    void enter() { lock.enter(); }
    bool tryEnter() { return lock.tryEnter(); }
    void leave() { lock.leave(); }

private:
    platform::Lock lock;
};

/// Enters a lock that is held for moments only: up to 1,500 attempts in a tight loop, then up
/// to 1,500 with the time slice given away after each, then a blocking enter.
template <class Section>
void spinEnter(Section& section) {
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

/// Holds a lock until the end of the scope.
template <class Section>
class [[nodiscard]] ScopedLock {
public:
    explicit ScopedLock(Section& entered) : section(entered) { section.enter(); }
    ~ScopedLock() { section.leave(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    Section& section;
};

}  // namespace Tarnkit
