#pragma once

#include <atomic>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A signal that threads sleep for until another thread gives it: work for a worker thread, or the
/// end of a run for the thread that started it. Not signalled at the start. Any number of threads
/// may call any operation at once; none allocates or fails.
///
/// A thread that has waited must not destroy the event just because it woke: the thread that
/// called `set` may still be inside that call. Something that both hold, such as a counted
/// reference, keeps the event alive until `set` has returned.
class PELK_API Event {
public:
    enum class Reset {
        automatic,  ///< the first thread that waits takes the signal away, the others sleep on
        manual      ///< the signal stands until `reset`, for all who wait
    };

    explicit Event(Reset kind) : resetKind(kind) {}
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// Gives the signal and wakes who waits. It stays if nobody does; giving it twice is once. What
    /// the caller wrote before is seen by the thread that wakes.
    void set();
    /// Takes the signal away.
    void reset();
    /// Returns when the signal is given, at once if it stands already.
    void wait();
    /// Waits at most this long, by a clock that nobody sets. True if the event was signalled; a
    /// time of 0 just looks.
    bool waitFor(int milliseconds);

private:
    bool take();

    std::atomic<int> signalled{0};
    std::atomic<int> waiters{0};  // threads that may be asleep: without one, `set` asks no system
    const Reset resetKind;
};

}  // namespace Tarnkit::platform
