#include <dlfcn.h>
#include <pthread.h>

#include <cstddef>

#include "materials/library/hit_roads.h"
#include "pelk/base/memory.h"
#include "pelk/platform/lock.h"

/// What a thread asked of the runtime library.
static thread_local struct RuntimeCalls {
    long heap = 0;   ///< memory taken or given back
    long locks = 0;  ///< mutexes entered
} calls;

static int lockBy(const char* name, pthread_mutex_t* lock) {
    ++calls.locks;
    return reinterpret_cast<decltype(&pthread_mutex_lock)>(dlsym(RTLD_NEXT, name))(lock);
}

// The functions below stand in front of the runtime's for the whole process, libpelk and the
// module included, since a program's own names are found first. Other libraries are to find them
// whatever the visibility of the rest.
#pragma GCC visibility push(default)
extern "C" {

void* __libc_malloc(std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) noexcept {
    ++calls.heap;
    return __libc_malloc(size);
}
void free(void* block) noexcept {
    ++calls.heap;
    __libc_free(block);
}

int pthread_mutex_lock(pthread_mutex_t* lock) noexcept {
    return lockBy("pthread_mutex_lock", lock);
}
int pthread_mutex_trylock(pthread_mutex_t* lock) noexcept {
    return lockBy("pthread_mutex_trylock", lock);
}
}
#pragma GCC visibility pop

namespace {

class SteadyState : public HitRoads {};

TEST_F(SteadyState, HitsTakeNoMemoryAndNoLock) {
    FakeContext context = hit();
    prepare(context);
    const Color warm = runHits(context);
    calls = {};
    const Color steady = runHits(context);
    const RuntimeCalls ofHits = calls;
    EXPECT_EQ(steady, warm);
    EXPECT_EQ(ofHits.heap, 0);
    EXPECT_EQ(ofHits.locks, 0);

    platform::Lock lock;
    calls = {};
    freeMemory(allocate(8));
    lock.enter();
    const RuntimeCalls seen = calls;
    lock.leave();
    EXPECT_EQ(seen.heap, 2) << "libraries go past the count";
    EXPECT_EQ(seen.locks, 1) << "libraries go past the count";
}

}  // namespace
