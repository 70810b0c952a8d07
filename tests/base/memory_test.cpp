#include "pelk/base/memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "pelk/base/debug_print.h"
#include "pelk/base/exception_msg.h"
#include "test_heap.h"

namespace {

using namespace Tarnkit;

std::string failureText(std::size_t size) {
    try {
        TestHeap::refuseAfter(0);
        allocate(size);
    } catch (const ExceptionMsg& message) {
        return message.text;
    }
    return "no failure";
}

TEST(MemoryTest, FailureTellsTheStateOfTheHeap) {
    const TestHeap heap;
    const DebugRecorder debug;
    TestHeap::state.report = {.freeBytes = 30, .usedBytes = 0x100000002, .blocks = 9, .status = 4};
    EXPECT_EQ(failureText(0x500000007),
              "Memory allocation failure; 7 bytes requested; 32 bytes already in heap; "
              "30 bytes free heap space.");
    EXPECT_EQ(debug.text,
              "[operator new] failed (size is 7)\n"
              "[getFreeHeapMemory] Getting free heap memory.\n"
              "[getFreeHeapMemory] heapstatus=4\n"
              "[getFreeHeapMemory] Number of blocks visited: 9\n");
    TestHeap::state.intact = false;
    EXPECT_EQ(failureText(1), " Heap is reported damaged.\n");
}

TEST(MemoryTest, AlignedBlocksStandOnTheirBoundaryAndGoBackWhole) {
    const TestHeap heap;
    for (const std::size_t size : {0, 1, 127, 128, 129, 100000}) {
        void* memory = alignedAlloc(size);
        ASSERT_TRUE(memory);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 128, 0u) << size;
        std::memset(memory, 0xab, size);  // must not touch what alignedFree needs
        alignedFree(memory);
    }
    alignedFree(nullptr);
    EXPECT_EQ(TestHeap::state.live, 0);
    EXPECT_FALSE(alignedAlloc(~std::size_t{100})) << "the padding overflows";
    EXPECT_THROW(allocateArray<double>(std::size_t{1} << 61), ExceptionMsg) << "the size overflows";
    TestHeap::refuseAfter(0);
    EXPECT_FALSE(alignedAlloc(1));
}

TEST(MemoryTest, PrintAndMessageAreCutAtTheirBuffers) {
    const DebugRecorder debug;
    debugPrint("%s", std::string(4096, 'y').c_str());
    EXPECT_EQ(debug.text, std::string(4095, 'y'));
    EXPECT_EQ(ExceptionMsg("%s", std::string(2000, 'x').c_str()).text, std::string(1023, 'x'));
}

}  // namespace
