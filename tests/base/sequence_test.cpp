#include "pelk/base/sequence.h"

#include <gtest/gtest.h>

#include <vector>

#include "test_heap.h"

namespace {

using namespace Tarnkit;

struct alignas(64) Entry {
    int value = 5;
};

TEST(SequenceTest, ConstructsABlockAheadAndNeverMoves) {
    const LeakCheck heap;
    Sequence<Entry> store(10);
    std::vector<Entry*> taken;
    for (int i = 0; i < 25; ++i) {
        if (i % 10 == 0) {
            TestHeap::refuseAfter(1);  // the array, and no block for it
            EXPECT_THROW(store.take(), ExceptionMsg);
            TestHeap::refuseNothing();
        }
        Entry* entry = store.take();
        EXPECT_EQ(entry->value, 5);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(entry) % 64, 0u);
        entry->value = i;
        taken.push_back(entry);
        EXPECT_EQ(TestHeap::state.live, 2 * (i / 10 + 1)) << "blocks after " << i + 1;
    }
    store.rewind();
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(store.next(), taken[i]) << i;
    EXPECT_FALSE(store.next());

    store.reset();
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(store.take(), taken[i]) << "the same again, as it was left";
    store.clear();
    EXPECT_THROW(Sequence<Entry>(0).take(), ExceptionMsg) << "an impossible size";
}

}  // namespace
