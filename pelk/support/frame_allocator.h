#pragma once

#include "pelk/base/memory.h"

namespace Tarnkit {

/// Lets a standard container take its memory where the frame's containers do, so that it fails
/// with the same ExceptionMsg.
template <class T>
struct FrameAllocator {
    using value_type = T;

    FrameAllocator() = default;
    template <class U>
    FrameAllocator(const FrameAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) { return allocateArray<T>(count); }
    void deallocate(T* memory, std::size_t) noexcept { freeMemory(memory); }
    friend bool operator==(FrameAllocator, FrameAllocator) { return true; }
};

}  // namespace Tarnkit
