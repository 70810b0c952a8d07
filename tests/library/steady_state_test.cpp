#include <cstdlib>
#include <mutex>
#include <shared_mutex>

#include "library/hit_roads.h"
#include "library/runtime_probe.h"

namespace {

class SteadyState : public HitRoads {};

TEST(RuntimeProbe, SeesHeapAndLocks) {
    std::mutex plain;
    std::recursive_mutex recursive;
    std::shared_mutex shared;
    void* volatile block = nullptr;  // or the compiler leaves the calls out
    const RuntimeProbe probe;
    block = new FakeVolume;
    delete static_cast<FakeVolume*>(block);
    block = std::malloc(8);
    block = std::realloc(block, 16);
    std::free(block);
    EXPECT_EQ(probe.calls().heap, 5);
    plain.lock();
    recursive.lock();
    shared.lock_shared();
    EXPECT_EQ(probe.calls().locks, 3);
    plain.unlock();
    recursive.unlock();
    shared.unlock_shared();
}

TEST_F(SteadyState, HitsTakeNoMemoryAndNoLock) {
    FakeContext context = hit();
    prepare(context);
    const Color warm = runHits(context);
    RuntimeCalls calls;
    {
        const RuntimeProbe probe;
        EXPECT_EQ(runHits(context), warm);
        calls = probe.calls();
    }
    EXPECT_EQ(calls.heap, 0);
    EXPECT_EQ(calls.locks, 0);
}

}  // namespace
