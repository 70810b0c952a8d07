#include "pelk/base/memory.h"

#include <cstdint>

#include "pelk/base/debug_print.h"
#include "pelk/base/exception_msg.h"
#include "pelk/base/heap_report.h"
#include "pelk/platform/heap.h"
#include "pelk/platform/memory_shortage.h"

namespace Tarnkit {

namespace {

constexpr std::uintptr_t kBoundary = 128;

}  // namespace

void* allocate(std::size_t size) {
    void* memory = platform::heap().allocate(size);
    if (!memory)
        allocationFailed(size);
    return memory;
}

void* allocate(std::size_t size, std::size_t alignment) {
    void* memory = platform::heap().allocateAligned(size, alignment);
    if (!memory)
        allocationFailed(size);
    return memory;
}

void freeMemory(void* memory) noexcept {
    platform::heap().release(memory);
}

void allocationFailed(std::size_t size) {
    platform::noteMemoryShortage();
    debugPrint("[operator new] failed (size is %i)\n", static_cast<int>(size));
    const u64 heapSize = getHeapSize();
    const u64 freeSize = getFreeHeapMemory();
    // The numbers of this text are 32 bits wide; what is above is cut off.
    ExceptionMsg message(
        "Memory allocation failure; %u bytes requested; %u bytes already in heap; "
        "%u bytes free heap space.",
        static_cast<u32>(size), static_cast<u32>(heapSize), static_cast<u32>(freeSize));
    if (!platform::heap().isIntact())
        message = ExceptionMsg(" Heap is reported damaged.\n");
    throw message;
}

void* alignedAlloc(std::size_t size) {
    const std::size_t padded = size + 2 * kBoundary;
    void* start = padded > size ? platform::heap().allocate(padded) : nullptr;
    if (!start)
        return nullptr;
    // The 8 bytes before the boundary hold the pointer that the heap wants back.
    const auto address = reinterpret_cast<std::uintptr_t>(start) + sizeof(void*);
    void** memory = reinterpret_cast<void**>((address + kBoundary - 1) & ~(kBoundary - 1));
    memory[-1] = start;
    return memory;
}

void alignedFree(void* memory) noexcept {
    if (memory)
        platform::heap().release(static_cast<void**>(memory)[-1]);
}

}  // namespace Tarnkit
