#include "frame/thread_pools.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "test_heap.h"

namespace {

struct Plain {
    ~Plain() { ++destroyed; }
    static inline int destroyed = 0;
};

struct Holder {
    Holder() : number(made++) {}
    ~Holder() { order.push_back(number); }
    int number;
    static inline int made = 0;
    static inline std::vector<int> order;
};

}  // namespace

template <>
inline constexpr bool Tarnkit::kPoolDestroys<Holder> = true;

namespace {

using namespace Tarnkit;

TEST(ThreadPoolsTest, GivesTheLastElementBackFirstWithoutTheHeap) {
    const TestHeap heap;
    PoolEntry<Plain> entry;
    std::vector<PoolElement<Plain>*> taken;
    for (int i = 0; i < 11; ++i)
        taken.push_back(entry.take());
    EXPECT_EQ(TestHeap::state.live, 4) << "two blocks and their arrays";
    EXPECT_EQ(entry.getLiveCount(), 11);
    for (PoolElement<Plain>* element : taken)
        entry.giveBack(element);
    for (int i = 10; i >= 0; --i) {
        EXPECT_EQ(entry.take(), taken[i]);
        EXPECT_FALSE(taken[i]->poolNext);
    }
    EXPECT_EQ(TestHeap::state.taken, 4);
    entry.giveBack(taken[7]);
    entry.reset();
    EXPECT_EQ(entry.getLiveCount(), 0);
    EXPECT_EQ(entry.take(), taken[0]) << "the free list is dropped, the blocks start anew";
}

TEST(ThreadPoolsTest, ThreadsShareNoElementAndResizeLeavesNothing) {
    const TestHeap heap;
    Plain::destroyed = 0;
    ThreadPools<Plain> pools;
    EXPECT_FALSE(pools.entry(0)) << "before its lifetime";
    pools.resize(2);
    std::set<PoolElement<Plain>*> all;
    for (int i = 0; i < 15; ++i)
        for (const int thread : {0, 1})
            all.insert(pools.entry(thread)->take());
    EXPECT_EQ(all.size(), 30u);
    pools.resize(3);
    EXPECT_EQ(TestHeap::state.live, 1) << "nothing but the fresh entries";
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pools.entry(0)) % 128, 0u);
    pools.destroy();
    pools.destroy();
    EXPECT_FALSE(pools.entry(0));
    EXPECT_EQ(TestHeap::state.live, 0);
    EXPECT_EQ(Plain::destroyed, 0) << "elements are forgotten, not destroyed";
}

TEST(ThreadPoolsTest, ElementsThatHoldMemoryAreDestroyedBackwards) {
    {
        ThreadPools<Holder> pools;
        pools.resize(1);
        pools.entry(0)->take();
    }
    EXPECT_EQ(Holder::order, (std::vector{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
}

TEST(ThreadPoolsTest, MemoryFailureLeavesThePool) {
    const TestHeap heap;
    ThreadPools<Plain> pools;
    TestHeap::refuseAfter(0);
    pools.resize(4);
    EXPECT_FALSE(pools.entry(0));
    TestHeap::refuseAfter(1);
    pools.resize(4);
    EXPECT_THROW(pools.entry(3)->take(), ExceptionMsg);
    EXPECT_EQ(pools.entry(3)->getLiveCount(), 1) << "raised all the same";
    TestHeap::refuseNothing();
    EXPECT_TRUE(pools.entry(3)->take());
}

}  // namespace
