#include "pelk/base/grow_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "pelk/base/exception_msg.h"
#include "test_heap.h"

namespace {

using Tarnkit::GrowTable;

TEST(GrowTableTest, CapacityFollowsTheStep) {
    const auto capacities = [](int step, int first, int second) {
        GrowTable<int> table(step);
        table.resize(first);
        const int atFirst = table.getCapacity();
        table.resize(second);
        return std::pair(atFirst, table.getCapacity());
    };
    EXPECT_EQ(capacities(100, 1, 101), std::pair(100, 200)) << "multiples of the step";
    EXPECT_EQ(capacities(100, 100, 200), std::pair(200, 200)) << "a full one takes one more";
    EXPECT_EQ(capacities(100, 50, 100), std::pair(100, 100)) << "what fits stays";
    EXPECT_EQ(capacities(0, 3, 4), std::pair(3, 6)) << "no step starts with what is asked for";
    EXPECT_EQ(capacities(-1, 3, 13), std::pair(3, 24)) << "and doubles until it fits";
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
