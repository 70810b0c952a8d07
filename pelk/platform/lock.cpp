#include "pelk/platform/lock.h"

#include <thread>

namespace Tarnkit::platform {

void Lock::enter() {
    for (int i = 0; i <= spinCount; ++i)
        if (tryEnter())
            return;
    mutex.lock();
}

void yieldThread() {
    std::this_thread::yield();
}

}  // namespace Tarnkit::platform
