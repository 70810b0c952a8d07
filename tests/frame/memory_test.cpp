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
}

TEST(AllocateTest, ADamagedHeapIsAllThatIsTold) {
    const TestHeap heap;
    const DebugRecorder debug;
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

TEST(HeapReportTest, AHeapWithoutBlocksHasNoSums) {
    const TestHeap heap;
    const DebugRecorder debug;
    TestHeap::state.report = {.freeBytes = 1, .usedBytes = 2, .blocks = 0, .status = -1};
    EXPECT_EQ(getAllocatedMemory(), 0u);
    EXPECT_EQ(getFreeHeapMemory(), 0u);
    EXPECT_EQ(getHeapSize(), 0u);
    EXPECT_EQ(debug.text.substr(0, debug.text.find("[getFree")),
              "[getAllocatedMemory] Getting allocated memory.\n"
              "[getAllocatedMemory] heapstatus=-1\n"
              "[getAllocatedMemory] Number of blocks visited: 0\n");
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

TEST(ExceptionMsgTest, TextIsCutAndCopiedWhole) {
    const ExceptionMsg message("%s", std::string(2000, 'x').c_str());
    ExceptionMsg copy("another");
    copy = message;
    EXPECT_EQ(std::string(copy.text), std::string(1023, 'x'));
}

TEST(DebugPrintTest, CutsAtItsBufferAndGoesToStandardErrorByDefault) {
    {
        const DebugRecorder recorder;
        debugPrint("%s", std::string(4095, 'x').c_str());
        EXPECT_EQ(recorder.text.size(), 4095u);
        debugPrint("%s", std::string(4096, 'y').c_str());
        EXPECT_EQ(recorder.text, std::string(4095, 'x') + std::string(4095, 'y'));
    }
    testing::internal::CaptureStderr();
    debugPrint("%d %s\n", 3, "words");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "3 words\n");
}

}  // namespace
