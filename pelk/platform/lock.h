#pragma once

#include <mutex>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A lock that its owner can enter again. It must be left as often as it was entered.
class PELK_API Lock {
public:
    /// `spins`: attempts to get a lock that is taken before the thread goes to sleep for it.
    explicit Lock(int spins = 0) : spinCount(spins) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void enter();
    /// True if the lock was free or the caller's own, and is now entered once more.
    bool tryEnter() { return mutex.try_lock(); }
    void leave() { mutex.unlock(); }

private:
    std::recursive_mutex mutex;
    int spinCount;
};

/// Gives the rest of the thread's time slice to another: a sleep of length zero.
PELK_API void yieldThread();

}  // namespace Tarnkit::platform
