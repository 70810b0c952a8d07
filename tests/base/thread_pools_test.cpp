#include "pelk/base/thread_pools.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "test_heap.h"

namespace {

using namespace Tarnkit;

struct Plain {
    ~Plain() { ADD_FAILURE() << "elements are forgotten, not destroyed"; }
};

TEST(ThreadPoolsTest, GivesTheLastElementBackFirstWithoutTheHeap) {
    const TestHeap heap;
    PoolEntry<Plain> entry;
    std::vector<PoolElement<Plain>*> taken;
    for (int i = 0; i < 11; ++i)
        taken.push_back(entry.take());
    EXPECT_EQ(TestHeap::state.live, 4) << "two blocks and their arrays";
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
    const LeakCheck heap;
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
    TestHeap::refuseAfter(0);
    EXPECT_THROW(pools.entry(2)->take(), ExceptionMsg);
    EXPECT_EQ(pools.entry(2)->getLiveCount(), 1) << "raised all the same";
    pools.resize(4);
    EXPECT_FALSE(pools.entry(0)) << "without memory";
    pools.destroy();
}

}  // namespace
