#include "frame/grow_table.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "frame/exception_msg.h"
#include "test_heap.h"

namespace {

using Tarnkit::GrowTable;

TEST(GrowTableTest, CapacityFollowsTheStep) {
    const auto capacities = [](int step, int first, int second) {
        GrowTable<int> table(step);
        std::vector<int> seen;
        for (const int size : {first, second, 0, first}) {
            size ? table.resize(size) : table.free();
            seen.push_back(table.getCapacity());
        }
        return seen;
    };
    using Four = std::vector<int>;
    EXPECT_EQ(capacities(100, 1, 101), (Four{100, 200, 0, 100})) << "multiples of the step";
    EXPECT_EQ(capacities(100, 100, 200), (Four{200, 200, 0, 200})) << "a full one takes one more";
    EXPECT_EQ(capacities(100, 50, 100), (Four{100, 100, 0, 100})) << "what fits stays";
    EXPECT_EQ(capacities(0, 3, 4), (Four{3, 6, 0, 3})) << "no step starts with what is asked for";
    EXPECT_EQ(capacities(-1, 3, 13), (Four{3, 24, 0, 3})) << "and doubles until it fits";
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
            if (kind == 0 && size > 0) {
                table.append(table[size / 2]);  // it may move while it is read
                model.push_back(int(model[size / 2]));
            } else if (kind < 9) {
                table.append(step);
                model.push_back(step);
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
    EXPECT_EQ(table[0], 7);
    TestHeap::refuseNothing();
    EXPECT_THROW(table.resize(INT_MAX), Tarnkit::ExceptionMsg) << "the capacity overflows";
}

}  // namespace
