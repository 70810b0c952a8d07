#include "pelk/base/hash_table.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unordered_map>

#include "test_heap.h"

using namespace Tarnkit;

TEST(HashLittleTest, AgreesWithThePublishedValues) {
    // From the self-test of lookup3.c.
    const char* text = "Four score and seven years ago";
    EXPECT_EQ(hashlittle("", 0, 0xdeadbeef), 0xbd5b7ddeu);
    EXPECT_EQ(hashlittle(text, 30, 0), 0x17770551u);
    EXPECT_EQ(hashlittle(text, 30, 1), 0xcd628161u);
}

TEST(HashTableTest, NamesCompareByTextAndNullIsOne) {
    HashTable<const char*, int> table;
    const std::string same = "name";
    EXPECT_TRUE(table.insert("name", 1) && table.insert("", 3));
    EXPECT_FALSE(table.insert(same.c_str(), 2) || table.find(nullptr));
    EXPECT_TRUE(table.insert(nullptr, 4));
    EXPECT_EQ(*table.find(""), 3);
}

TEST(HashTableTest, BehavesAsAMapUnderRandomOperations) {
    const LeakCheck heap;
    std::mt19937 random(23);
    HashTable<u32, int> table;
    std::unordered_map<u32, int> model;
    for (int step = 0; step < 100000; ++step) {
        // Long phases of more insertions, then of more removals, pass many sizes.
        const bool growing = step / 10000 % 2 == 0;
        const u32 key = random() % 5000;
        if ((random() % 4 == 0) != growing) {
            ASSERT_EQ(table.insert(key, step), model.emplace(key, step).second);
        } else {
            ASSERT_EQ(table.remove(key), model.erase(key) == 1);
        }
        if (step == 65000) {
            table.clear();
            model.clear();
        }
        const auto found = model.find(random() % 5000);
        if (found != model.end()) {
            ASSERT_EQ(*table.find(found->first), found->second) << step;
        }
        ASSERT_EQ(table.size(), static_cast<int>(model.size()));
    }
}

TEST(HashTableTest, MemoryFailureLosesNoEntry) {
    const TestHeap heap;
    HashTable<u32, int> table;
    for (u32 key = 0; key < 1000; ++key)
        table.insert(key, static_cast<int>(key));
    TestHeap::refuseAfter(0);
    EXPECT_THROW(table.insert(1000, 0), ExceptionMsg) << "no node";
    for (u32 key = 999; key >= 100; --key)
        EXPECT_TRUE(table.remove(key)) << "even where the table can't shrink";
    TestHeap::refuseNothing();
    EXPECT_EQ(table.size(), 100);
    for (u32 key = 0; key < 1001; ++key)
        ASSERT_EQ(table.find(key) != nullptr, key < 100) << key;
}
