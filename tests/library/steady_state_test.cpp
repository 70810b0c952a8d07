#include "frame/memory.h"
#include "library/hit_roads.h"
#include "library/runtime_probe.h"
#include "platform/lock.h"

namespace {

class SteadyState : public HitRoads {};

TEST(RuntimeProbe, SeesWhatLibrariesAskFor) {
    platform::Lock lock;
    RuntimeCalls calls;
    {
        const RuntimeProbe probe;
        freeMemory(allocate(8));
        lock.enter();
        calls = probe.calls();
    }
    lock.leave();
    EXPECT_EQ(calls.heap, 2);
    EXPECT_EQ(calls.locks, 1);
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
