#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "pelk/platform/affinity.h"
#include "pelk/platform/api.h"

namespace Tarnkit::platform {

enum class ThreadPriority { normal, belowNormal };

/// A thread of the system. One owner at a time may call its operations.
class PELK_API Thread {
public:
    using Entry = void (*)(void* argument);

    Thread() = default;
    /// Lets a thread that nobody has joined run on by itself.
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Calls `entry` on a new thread. `stackSize`: in bytes, brought up to the least that the
    /// system takes; below 1 is the system's default. False if there can be no more threads.
    bool start(Entry entry, void* argument, int stackSize);

    /// Takes effect while the thread runs, and costs nothing if it has the priority already.
    void setPriority(ThreadPriority priority);
    /// Binds the thread to these processors. False if the system refuses.
    bool setAffinity(const ProcessorSet& processors);

    /// Returns when the thread has ended.
    void join();

    /// Ends the thread wherever it stands: nothing on its stack is destroyed, no lock that it
    /// holds is ever left, and its stack is lost. False if it has not gone within two
    /// seconds, as it may block the signal; then it runs on by itself.
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
