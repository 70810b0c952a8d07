#include "pelk/base/grow_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "pelk/base/exception_msg.h"
#include "test_heap.h"

namespace {

using Tarnkit::GrowTable;

TEST(GrowTableTest, CapacityFollowsTheStep) {
    const auto capacity = [](int step, int first, int second) {
        GrowTable<int> table(step);
        table.resize(first);
        table.resize(second);
        return table.getCapacity();
    };
    EXPECT_EQ(capacity(100, 1, 101), 200) << "multiples of the step";
    EXPECT_EQ(capacity(100, 1, 200), 300) << "a full one takes one more";
    EXPECT_EQ(capacity(100, 50, 100), 100) << "what fits stays";
    EXPECT_EQ(capacity(0, 3, 4), 6) << "no step starts with what is asked for";
    EXPECT_EQ(capacity(-1, 3, 13), 24) << "and doubles until it fits";
}

TEST(GrowTableTest, EntriesMoveWhenItGrowsAndWhenOneIsRemoved) {
    const TestHeap heap;
    {
        GrowTable<int> table;
        table.append(7);
        table.append(table[0]);  // moves while it is read
        table.append(8);
        table.resize(4);
        table.removeBySwap(0);
        EXPECT_EQ(std::vector<int>(table.begin(), table.end()), (std::vector{0, 7, 8}));
        TestHeap::refuseAfter(0);
        EXPECT_THROW(table.resize(100), Tarnkit::ExceptionMsg);
        EXPECT_EQ(table[2], 8);
        TestHeap::refuseNothing();
        EXPECT_THROW(table.resize(INT_MAX), Tarnkit::ExceptionMsg) << "the capacity overflows";
    }
    EXPECT_EQ(TestHeap::state.live, 0);
}

}  // namespace
