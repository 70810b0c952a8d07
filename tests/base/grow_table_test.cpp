#include "pelk/base/grow_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "pelk/base/exception_msg.h"
#include "test_heap.h"

using Tarnkit::GrowTable;

TEST(GrowTableTest, EntriesMoveWhenItGrowsAndWhenOneIsRemoved) {
    const LeakCheck heap;
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
