#include "pelk/platform/heap.h"

#include <malloc.h>

#include <cstdlib>

namespace Tarnkit::platform {

namespace {

void* allocateAligned(std::size_t size, std::size_t alignment) {
    void* memory = nullptr;
    if (alignment < sizeof(void*))
        alignment = sizeof(void*);
    return posix_memalign(&memory, alignment, size) == 0 ? memory : nullptr;
}

/// The sums of glibc's allocator. Large blocks, which it maps from the system one by one, stand in
/// separate sums and are added here.
HeapReport report() {
    const struct mallinfo2 info = mallinfo2();
    return {
        .freeBytes = info.fordblks,
        .usedBytes = info.uordblks + info.hblkhd,
        .blocks = static_cast<unsigned>(info.ordblks + info.smblks + info.hblks),
        .status = 0,
    };
}

/// glibc's allocator ends the process itself when it finds damage, so whoever can ask is told true.
bool isIntact() {
    return true;
}

constexpr Heap kSystemHeap{
    .allocate = std::malloc,
    .allocateAligned = allocateAligned,
    .reallocate = std::realloc,
    .release = std::free,
    .report = report,
    .isIntact = isIntact,
};

/// Ready before the first constructor of any library runs, for constructors allocate.
constinit const Heap* current = &kSystemHeap;

}  // namespace

const Heap& heap() {
    return *current;
}

const Heap& systemHeap() {
    return kSystemHeap;
}

void setHeap(const Heap& heap) {
    current = &heap;
}

}  // namespace Tarnkit::platform
