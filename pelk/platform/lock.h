#pragma once

#include <mutex>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A recursive mutex: the thread that holds it may enter it again and must leave it as often.
/// Neither fair nor shared between processes. Code above this folder uses the classes of
/// base/critical_section.h, which fix the number of spins.
class PELK_API Lock {
public:
    /// `spins`: attempts to get a lock that is taken before the thread goes to sleep for it.
    explicit Lock(int spins = 0) : spinCount(spins) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    /// Returns when the calling thread holds the lock.
    void enter();
    /// True if the lock was free or the caller's own, and is now entered once more.
    bool tryEnter() { return mutex.try_lock(); }
    /// Undoes one `enter` or successful `tryEnter`, on the thread that made it.
    void leave() { mutex.unlock(); }

private:
    std::recursive_mutex mutex;
    int spinCount;
};

/// Gives the rest of the thread's time slice to another thread that is ready to run, if there is
/// one.
PELK_API void yieldThread();

}  // namespace Tarnkit::platform
