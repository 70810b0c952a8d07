#include "frame/grow_table.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "frame/exception_msg.h"
#include "test_heap.h"

namespace {

using Tarnkit::GrowTable;

TEST(GrowTableTest, CapacityFollowsTheStep) {
    const struct {
        const char* what;
        int step, first, second, capacityFirst, capacitySecond;
    } cases[] = {
        {"multiples of the step", 100, 1, 101, 100, 200},
        {"a full multiple takes one more", 100, 100, 200, 200, 200},
        {"what fits stays", 100, 50, 100, 100, 100},
        {"no step starts with what is asked for", 0, 3, 4, 3, 6},
        {"and doubles until it fits", -1, 3, 13, 3, 24},
    };
    for (const auto& c : cases) {
        GrowTable<int> table(c.step);
        table.resize(c.first);
        EXPECT_EQ(table.getCapacity(), c.capacityFirst) << c.what;
        table.resize(c.second);
        EXPECT_EQ(table.getCapacity(), c.capacitySecond) << c.what;
        table.free();
        EXPECT_EQ(table.getCapacity(), 0) << c.what;
        table.resize(c.first);
        EXPECT_EQ(table.getCapacity(), c.capacityFirst) << c.what << ", the step is kept";
    }
}

TEST(GrowTableTest, BehavesAsAVectorUnderRandomOperations) {
    const TestHeap heap;
    {
        std::mt19937 random(5);
        GrowTable<int> table(7);
        std::vector<int> model;
        for (int step = 0; step < 20000; ++step) {
            const int size = static_cast<int>(model.size());
            const unsigned kind = random() % 16;
            if (kind < 9) {
                const int value = size > 0 && kind == 0 ? model[size / 2] : static_cast<int>(step);
                table.append(size > 0 && kind == 0 ? table[size / 2] : value);
                model.push_back(value);
            } else if (kind < 14 && size > 0) {
                const int at = static_cast<int>(random() % size);
                table.removeBySwap(at);
                model[at] = model.back();
                model.pop_back();
            } else if (kind == 14) {
                table.resize(size + 3);
                model.resize(size + 3);
            } else if (size > 300) {
                table.free();
                model.clear();
            }
            ASSERT_EQ(std::vector<int>(table.begin(), table.end()), model) << step;
        }
    }
    EXPECT_EQ(TestHeap::state.live, 0);
}

TEST(GrowTableTest, FailedGrowthKeepsTheTable) {
    const TestHeap heap;
    GrowTable<int> table(2);
    table.append(7);
    TestHeap::refuseAfter(0);
    EXPECT_THROW(table.resize(100), Tarnkit::ExceptionMsg);
    EXPECT_EQ(table.size(), 1);
    EXPECT_EQ(table[0], 7);
    TestHeap::refuseNothing();
    EXPECT_THROW(table.resize(INT_MAX), Tarnkit::ExceptionMsg) << "the capacity overflows";
}

}  // namespace
