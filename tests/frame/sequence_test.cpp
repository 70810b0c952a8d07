#include "frame/sequence.h"

#include <gtest/gtest.h>

#include <vector>

#include "test_heap.h"

namespace {

using namespace Tarnkit;

struct alignas(64) Entry {
    int value = 5;
};

TEST(SequenceTest, ConstructsABlockAheadAndNeverMoves) {
    const TestHeap heap;
    Sequence<Entry> store(10);
    std::vector<Entry*> taken;
    for (int i = 0; i < 25; ++i) {
        Entry* entry = store.take();
        EXPECT_EQ(entry->value, 5);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(entry) % 64, 0u);
        entry->value = i;
        taken.push_back(entry);
        EXPECT_EQ(TestHeap::state.live, 2 * (i / 10 + 1)) << "blocks after " << i + 1;
    }
    EXPECT_EQ(store.getMemoryUsed(), 3 * (sizeof(_SequenceBlock<Entry>) + 10 * sizeof(Entry)));

    store.rewind();
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(store.next(), taken[i]) << i;
    EXPECT_FALSE(store.next());

    store.reset();
    EXPECT_FALSE(store.next());
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(store.take(), taken[i]) << "the same again, as it was left";
    EXPECT_EQ(TestHeap::state.taken, 6);
    store.clear();
    EXPECT_EQ(TestHeap::state.live, 0);
    EXPECT_EQ(store.getMemoryUsed(), 0u);
}

TEST(SequenceTest, AFailedTakeLeavesTheStore) {
    const TestHeap heap;
    Sequence<int> store(1);
    store.take();
    for (const int requests : {0, 1}) {  // no array, then no block for it
        TestHeap::refuseAfter(requests);
        EXPECT_THROW(store.take(), ExceptionMsg);
        EXPECT_EQ(store.size(), 1);
        EXPECT_EQ(TestHeap::state.live, 2);
    }
    TestHeap::refuseNothing();
    *store.take() = 8;
    store.rewind();
    store.next();
    EXPECT_EQ(*store.next(), 8);
}

TEST(SequenceTest, AnImpossibleBlockSizeIsAMemoryFailure) {
    struct Huge {
        char bytes[std::size_t{1} << 40];
    };
    for (const int blockSize : {0, -3, 1 << 30})
        EXPECT_THROW(Sequence<Huge>(blockSize).take(), ExceptionMsg) << blockSize;
}

}  // namespace
