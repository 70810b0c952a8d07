#include "pelk/platform/memory_shortage.h"

#include <pthread.h>
#include <sys/mman.h>

#include <atomic>
#include <new>

namespace Tarnkit::platform {

namespace {

constexpr std::size_t kReserve = std::size_t{1} << 20;

constinit std::atomic<bool> shortage{false};
constinit std::atomic<void*> reserve{nullptr};

/// Address space that the system counts as the process's, but gives no memory for.
void* map(std::size_t bytes) {
    void* const start =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return start == MAP_FAILED ? nullptr : start;
}

void failNew() {
    noteMemoryShortage();
    throw std::bad_alloc();
}

/// What a thread's stack takes if its maker doesn't say.
std::size_t usualStackSize() {
    std::size_t size = std::size_t{8} << 20;
    pthread_attr_t attributes;
    if (pthread_getattr_default_np(&attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &size);
        pthread_attr_destroy(&attributes);
    }
    return size;
}

}  // namespace

void watchMemory() {
    reserve = map(kReserve);
    std::set_new_handler(failNew);
}

void noteMemoryShortage() {
    shortage = true;
    if (void* const kept = reserve.exchange(nullptr))
        munmap(kept, kReserve);
}

bool hadMemoryShortage() {
    return shortage;
}

bool canHaveMemory(std::size_t bytes, int threads) {
    const std::size_t all = bytes + static_cast<std::size_t>(threads) * usualStackSize();
    void* const start = map(all);
    if (start)
        munmap(start, all);
    return start != nullptr;
}

}  // namespace Tarnkit::platform
