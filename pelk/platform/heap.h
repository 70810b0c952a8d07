#pragma once

#include <cstddef>
#include <cstdint>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// What the runtime's heap says of itself.
struct HeapReport {
    std::uint64_t freeBytes;  ///< sum of the free blocks
    std::uint64_t usedBytes;  ///< sum of the blocks in use
    unsigned blocks;          ///< blocks seen; 0 if the heap gave no report, the sums mean nothing
    int status;               ///< how the look at the heap ended: 0 is a complete report
};

/// The operations of the runtime's heap. A test may put its own in their place, to count, to
/// refuse memory or to play a damaged heap.
struct Heap {
    /// Null if the memory can't be had. A size of 0 gives a block too.
    void* (*allocate)(std::size_t size);
    /// `alignment`: a power of two. Null as above.
    void* (*allocateAligned)(std::size_t size, std::size_t alignment);
    /// `block` may be null. If the answer is null the block stands unchanged.
    void* (*reallocate)(void* block, std::size_t size);
    /// Takes what any of the three above gave, or null.
    void (*release)(void* block);
    HeapReport (*report)();
    /// True unless the heap is known to be damaged.
    bool (*isIntact)();
};

/// The operations in use.
PELK_API const Heap& heap();

/// The system's own operations.
PELK_API const Heap& systemHeap();

/// Replaces the operations; not to be called while another thread uses the heap. `heap` must
/// stay valid, and its `release` must take blocks that the operations before it gave.
PELK_API void setHeap(const Heap& heap);

}  // namespace Tarnkit::platform
