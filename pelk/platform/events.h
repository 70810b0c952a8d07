#pragma once

#include <atomic>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A signal that threads wait for. It is not signalled at the start. Who may destroy it must
/// know that no call of `set` is under way: the waiter wakes before `set` has returned.
class PELK_API Event {
public:
    enum class Reset {
        automatic,  ///< one waiting thread takes the signal and leaves the event without it
        manual      ///< the signal stands until `reset`, for all who wait
    };

    explicit Event(Reset kind) : resetKind(kind) {}
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void set();
    void reset();
    void wait();
    /// Waits at most this long by the steady clock. True if the event was signalled.
    bool waitFor(int milliseconds);

private:
    bool take();

    std::atomic<int> signalled{0};
    std::atomic<int> waiters{0};
    const Reset resetKind;
};

}  // namespace Tarnkit::platform
