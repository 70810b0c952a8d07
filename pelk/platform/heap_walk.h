#pragma once

#include <cstddef>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A block of the runtime's heap that is free.
struct FreeBlock {
    const unsigned char* memory;
    std::size_t size;
};

/// Shows every free block of a heap to `visit`, in the heap's own order. False if this heap can't
/// be walked; nothing has been shown then.
using HeapWalk = bool (*)(void (*visit)(const FreeBlock&));

/// Walks the runtime's heap. Always false on this system: glibc tells sums, but has no operation
/// that shows one block after the other.
PELK_API bool walkFreeBlocks(void (*visit)(const FreeBlock&));

/// Puts a heap of a test's own in place of the runtime's; null puts that back.
PELK_API void setHeapWalk(HeapWalk walk);

}  // namespace Tarnkit::platform
