#include "frame/memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "frame/debug_print.h"
#include "frame/exception_msg.h"
#include "frame/heap_report.h"
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

TEST(AllocateTest, FailureTellsTheStateOfTheHeap) {
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
    TestHeap::state.report.blocks = 0;  // has no sums
    EXPECT_EQ(getAllocatedMemory(), 0u);
    EXPECT_EQ(getHeapSize(), 0u);
    TestHeap::state.intact = false;
    EXPECT_EQ(failureText(1), " Heap is reported damaged.\n");
}

TEST(AllocateTest, SuccessPrintsNothing) {
    const TestHeap heap;
    const DebugRecorder debug;
    void* plain = allocate(100);
    void* aligned = allocate(100, 64);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % 64, 0u);
    freeMemory(plain);
    freeMemory(aligned);
    freeMemory(nullptr);
    EXPECT_EQ(debug.text, "");
    EXPECT_EQ(TestHeap::state.live, 0);
    struct Large {
        char bytes[64];
    };
    EXPECT_THROW(allocateArray<Large>(std::size_t{1} << 60), ExceptionMsg) << "the size overflows";
}

TEST(AlignedAllocTest, StandsOnItsBoundaryAndGoesBackWhole) {
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
    TestHeap::refuseAfter(0);
    EXPECT_FALSE(alignedAlloc(1));
}

TEST(DebugPrintTest, CutsAtItsBufferAndGoesToStandardErrorByDefault) {
    {
        const DebugRecorder recorder;
        debugPrint("%s", std::string(4096, 'y').c_str());
        EXPECT_EQ(recorder.text, std::string(4095, 'y'));
    }
    testing::internal::CaptureStderr();
    debugPrint("%d %s\n", 3, ExceptionMsg("%s", std::string(2000, 'x').c_str()).text);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "3 " + std::string(1023, 'x') + "\n");
}

}  // namespace
