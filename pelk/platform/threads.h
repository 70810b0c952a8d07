#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "pelk/platform/affinity.h"
#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// `belowNormal` lets other programs of the machine go first: a render in the background.
enum class ThreadPriority { normal, belowNormal };

/// A thread of the operating system, whose stack size, priority and processors can be set, as those
/// of std::thread can't. One owner at a time may call its operations.
class PELK_API Thread {
public:
    using Entry = void (*)(void* argument);

    Thread() = default;
    /// Doesn't wait: a thread that nobody has joined runs on by itself.
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Calls `entry` with `argument` on a new thread; it must not throw. `stackSize`: in bytes,
    /// brought up to the least that the system takes; below 1 is the system's default. False if
    /// there can be no more threads.
    bool start(Entry entry, void* argument, int stackSize);

    /// Takes effect while the thread runs, and costs nothing if it has the priority already.
    void setPriority(ThreadPriority priority);
    /// Binds the thread to these processors. False if the system refuses.
    bool setAffinity(const ProcessorSet& processors);

    /// Returns when the thread has ended, at once if none was started. Not to be called on it.
    void join();

    /// Ends the thread wherever it stands: nothing on its stack is destroyed, a lock that it holds
    /// stays held for good, the heap's among them, and the memory of its stack is lost. A last
    /// means against a plug-in that never returns. False if it has not gone within two seconds, as
    /// it may block the signal; then it runs on by itself. `exitCode`: what the system is told.
    bool kill(unsigned exitCode);

    /// The name of the calling thread in debuggers, cut to what the system takes.
    static void setName(const char* name);

private:
    struct Body;
    static void* run(void* body);

    std::shared_ptr<Body> body;  // null if no thread was started, or it was let go
    std::optional<ThreadPriority> currentPriority;
    std::uintptr_t native = 0;
};

/// Sleeps for at least this long.
PELK_API void sleepFor(int milliseconds);

/// Asked before each thread is made: false refuses it, as a system without resources does.
using ThreadFilter = bool (*)();

/// Sets the filter, null for none; a test's way to be refused a thread.
PELK_API void setThreadFilter(ThreadFilter filter);

}  // namespace Tarnkit::platform
