#include "platform/events.h"

#include <chrono>

namespace Tarnkit::platform {

void Event::set() {
    {
        const std::lock_guard hold(mutex);
        isSet = true;
    }
    // Outside the lock, or the woken thread would run into it and sleep once more.
    if (resetKind == Reset::automatic)
        changed.notify_one();
    else
        changed.notify_all();
}

void Event::reset() {
    const std::lock_guard hold(mutex);
    isSet = false;
}

void Event::wait() {
    std::unique_lock hold(mutex);
    changed.wait(hold, [this] { return isSet; });
    isSet = resetKind == Reset::manual;
}

bool Event::waitFor(int milliseconds) {
    std::unique_lock hold(mutex);
    if (!changed.wait_for(hold, std::chrono::milliseconds(milliseconds), [this] { return isSet; }))
        return false;
    isSet = resetKind == Reset::manual;
    return true;
}

}  // namespace Tarnkit::platform
